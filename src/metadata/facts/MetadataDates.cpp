// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/facts/MetadataDates.h"

#include "core/Iso8601.h"

#include <QRegularExpression>
#include <optional>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QString dayText(const QDate& day) {
    return day.toString(u"yyyy-MM-dd"_s);
}

/// The day of a date in one of the forms without a zone. That is local time, so the day stays.
std::optional<QDate> localDay(const QString& text) {
    static const QRegularExpression forms(
        u"^(?:(?<y>[0-9]{4}):(?<m>[0-9]{1,2}):(?<d>[0-9]{1,2}) (?<time>[0-9]{1,2}:[0-9]{1,2}:[0-9]{1,2})"
        "|(?<y2>[0-9]{4})-(?<m2>[0-9]{1,2})-(?<d2>[0-9]{1,2})"
        "(?: (?<time2>[0-9]{1,2}:[0-9]{1,2}:[0-9]{1,2}))?)\\z"_s);
    const QRegularExpressionMatch match = forms.match(text);
    if (!match.hasMatch()) {
        return std::nullopt;
    }
    const auto captured = [&match](const QString& first, const QString& second) {
        return match.captured(first) + match.captured(second); // only one of the two matched
    };
    const QDate day(captured(u"y"_s, u"y2"_s).toInt(), captured(u"m"_s, u"m2"_s).toInt(),
                    captured(u"d"_s, u"d2"_s).toInt());
    const QString time = captured(u"time"_s, u"time2"_s);
    const bool timeIsValid = time.isEmpty() || QTime::fromString(time, u"H:m:s"_s).isValid();
    return day.isValid() && timeIsValid ? std::optional(day) : std::nullopt;
}

} // namespace

QString roundTripIso8601(const QString& text) {
    std::optional<QDateTime> moment = parseIso8601(text);
    if (!moment) {
        moment = parseIso8601(QString(text).replace(u',', u'.'));
    }
    return moment ? formatIso8601(*moment) : text;
}

QString normalizeDate(const QString& text, const QTimeZone& zone) {
    if (const std::optional<QDateTime> moment = parseIso8601(text)) {
        return dayText(moment->toTimeZone(zone).date());
    }
    if (const std::optional<QDate> day = localDay(text)) {
        return dayText(*day);
    }
    static const QRegularExpression startsWithDay(u"^[0-9]{4}-[0-9]{2}-[0-9]{2}"_s);
    return startsWithDay.match(text).hasMatch() ? text.first(10) : text;
}

} // namespace ostrelle
