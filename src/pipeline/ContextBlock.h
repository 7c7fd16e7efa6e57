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

/// All that is known of one image when its caption is asked for.
struct CaptionFacts {
    XMPContext context;
    std::optional<QString> rights;
    QString defaultRightsFallback; ///< stands in for missing rights
    CaptionStyle captionStyle = CaptionStyle::apSports;
    Sport sport = Sport::football;
    bool useTeamIdentification = false;
    TeamIdentity team1;
    TeamIdentity team2;
    std::optional<QString> audioNote; ///< what the photographer said, in writing
    QString defaultCaption;           ///< the caption that the image has now
};

/// The date in the style's own form, for the day that the instant has in the zone; nothing when the text is
/// no full ISO 8601 date-time, and for the simple style. Month and weekday names are English throughout.
std::optional<QString> dateText(const QString& dateISO8601, CaptionStyle style, const QTimeZone& zone);

/// The fact sheet for the model: "Context:" and one labelled line for each fact.
QString contextBlock(const CaptionFacts& facts, const QTimeZone& zone);

/// The line that tells the model which caption the image has now.
QString existingCaptionLine(const CaptionFacts& facts);

/// What goes with one image of a batch, whose rules all its images share: fact sheet and existing caption.
QString buildBatchContext(const CaptionFacts& facts, const QTimeZone& zone);

} // namespace ostrelle
