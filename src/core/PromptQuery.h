// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/CaptionStyle.h"
#include "core/FallbackBehavior.h"
#include "core/Sport.h"

#include <QList>
#include <QPair>
#include <QString>

namespace ostrelle {

/// What to request prompt templates for.
struct PromptQuery {
    CaptionStyle style = CaptionStyle::apSports;
    Sport sport = Sport::football;
    FallbackBehavior fallback = FallbackBehavior::attemptCaption;
    bool includeOffenseDefense = false;
    bool prioritizeAudioFiles = false;
    QString version = QStringLiteral("v1");
};

/// The names and values of the request's query, in order.
QList<QPair<QString, QString>> queryItems(const PromptQuery& query);

/// The key of the query's cache entry, such as "v1-apSports-football-attemptCaption-true-false".
QString cacheKey(const PromptQuery& query);

} // namespace ostrelle
