// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QTimeZone>

namespace ostrelle {

/// A date and time with a zone as the same instant in UTC, "2024-03-05T19:02:33Z". A decimal comma counts as
/// a point. A date alone, a fraction of a second or anything else stays as it is.
QString roundTripIso8601(const QString& text);

/// The day, "2024-03-05", of a date as cameras and metadata tools write it: an ISO date-time with a zone,
/// "2024:03:05 19:02:33" (EXIF), "2024-03-05 19:02:33" or "2024-03-05". An instant falls on its day in the
/// given zone. Any other text yields the day it starts with, or else stays as it is.
QString normalizeDate(const QString& text, const QTimeZone& zone);

} // namespace ostrelle
