// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Iso8601.h"

#include <QRegularExpression>
#include <QTimeZone>

namespace ostrelle {

using namespace Qt::StringLiterals;

std::optional<QDateTime> parseIso8601(QStringView text) {
    static const QRegularExpression form(
        u"^([0-9]{4})-([0-9]{2})-([0-9]{2})T([0-9]{2}):([0-9]{2}):([0-9]{2})(?:Z|([+-])([0-9]{2}):([0-9]{2}))\\z"_s);
    const QRegularExpressionMatch match = form.match(text.toString());
    if (!match.hasMatch()) {
        return std::nullopt;
    }
    const auto number = [&match](int group) { return match.capturedView(group).toInt(); };
    const QDate date(number(1), number(2), number(3));
    const QTime time(number(4), number(5), number(6));
    if (!date.isValid() || !time.isValid() || number(8) > 23 || number(9) > 59) {
        return std::nullopt;
    }
    const int sign = match.capturedView(7) == u"-"_s ? -1 : 1;
    const int offsetSeconds = sign * (number(8) * 60 + number(9)) * 60;
    return QDateTime(date, time, QTimeZone::utc()).toUTC().addSecs(-offsetSeconds);
}

QString formatIso8601(const QDateTime& moment) {
    return moment.toUTC().toString(u"yyyy-MM-dd'T'HH:mm:ss'Z'"_s);
}

} // namespace ostrelle
