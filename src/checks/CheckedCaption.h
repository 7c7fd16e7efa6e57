// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/CaptionStyle.h"
#include "metadata/facts/XMPContext.h"

#include <QDate>
#include <QList>
#include <QString>
#include <optional>

namespace ostrelle {

/// A caption with what is known of its picture.
struct CheckedCaption {
    QString caption;
    CaptionStyle style = CaptionStyle::apSports;
    XMPContext context = {};
    std::optional<QString> rights = {};
    std::optional<QString> creator = {};
    /// The days that the picture's date may mean: as written, and in the user's time zone. Empty without a
    /// date.
    QList<QDate> days = {};
    bool isReplyCutOff = false; ///< the model reached the most tokens that it may use
};

/// The days of a date from the metadata: "2026-01-03", "2026-01-03T23:30:00Z" or "20260103". `local` is what
/// it means in the user's time zone, if it has a time of day.
QList<QDate> daysOf(const QString& date, const std::optional<QDate>& local);

} // namespace ostrelle
