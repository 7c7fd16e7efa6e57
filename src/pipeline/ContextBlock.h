// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/CaptionStyle.h"
#include "core/Sport.h"
#include "metadata/facts/XMPContext.h"

#include <QString>
#include <QTimeZone>
#include <optional>

namespace ostrelle {

/// A team of the game, as the user named it.
struct TeamIdentity {
    QString name;
    QString jerseyColor;
};

/// The facts of one image for its caption request.
struct CaptionFacts {
    XMPContext context;
    std::optional<QString> rights;
    QString defaultRightsFallback; ///< stands in for missing rights
    CaptionStyle captionStyle = CaptionStyle::apSports;
    Sport sport = Sport::football;
    bool useTeamIdentification = false;
    TeamIdentity team1;
    TeamIdentity team2;
    std::optional<QString> audioNote; ///< the transcript
    QString defaultCaption;           ///< the caption that the image has now
};

/// The day of the instant in the zone, in the style's own form and in English. Nothing for the simple style,
/// or if the text is not a full ISO 8601 date-time.
std::optional<QString> dateText(const QString& dateISO8601, CaptionStyle style, const QTimeZone& zone);

/// The fact sheet for the model: "Context:" and a labelled line for each fact.
QString contextBlock(const CaptionFacts& facts, const QTimeZone& zone);

/// The line of a prompt with the image's present caption.
QString existingCaptionLine(const CaptionFacts& facts);

/// The text beside one image of a batch: fact sheet and existing caption. All images share the rules.
QString buildBatchContext(const CaptionFacts& facts, const QTimeZone& zone);

} // namespace ostrelle
