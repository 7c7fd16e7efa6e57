// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QTimeZone>

namespace ostrelle {

/// A date and time with a zone as the same instant in UTC, "2024-03-05T19:02:33Z". A decimal comma is read
/// as a point. A date alone, a fraction of a second or anything else stays as it stands.
QString roundTripIso8601(const QString& text);

/// The day of a date as cameras and metadata tools write it, "2024-03-05". Read are an ISO date-time with a
/// zone, "2024:03:05 19:02:33" (EXIF), "2024-03-05 19:02:33" and "2024-03-05". An instant falls on the day
/// that it has in the given zone. Of other text that begins with such a day, the day; otherwise the text.
QString normalizeDate(const QString& text, const QTimeZone& zone);

} // namespace ostrelle
