// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QString>
#include <QStringView>
#include <optional>

namespace ostrelle {

/// Parses only the internet date-time form of ISO 8601: "2024-03-05T19:02:33Z", or an offset such as "-05:00"
/// for the Z. Date, time and zone are required; a fraction of a second is refused. Returns UTC.
std::optional<QDateTime> parseIso8601(QStringView text);

/// The same form, in UTC: "2024-03-05T19:02:33Z".
QString formatIso8601(const QDateTime& moment);

} // namespace ostrelle
