// SPDX-License-Identifier: GPL-3.0-or-later
#include "checks/Dates.h"

#include <QLocale>
#include <QRegularExpression>
#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// A date in a caption.
struct WrittenDate {
    qsizetype from = 0;
    qsizetype to = 0;
    int weekday = 0; ///< as QDate::dayOfWeek(), 0 if not told
    int month = 0;
    int day = 0;
    int year = 0; ///< 0 if not told
};

/// The position of a name, abbreviated or not, in a list of names; from 1, and 0 for none.
int numberOf(const QString& name, const QStringList& names) {
    const QString start = name.left(3).toLower();
    for (qsizetype index = 0; start.size() == 3 && index < names.size(); ++index) {
        if (names.at(index).startsWith(start)) {
            return static_cast<int>(index) + 1;
        }
    }
    return 0;
}

int weekdayOf(const QString& name) {
    static const QStringList names = {u"mon"_s, u"tue"_s, u"wed"_s, u"thu"_s, u"fri"_s, u"sat"_s, u"sun"_s};
    return numberOf(name, names);
}

int monthOf(const QString& name) {
    static const QStringList names = {u"jan"_s, u"feb"_s, u"mar"_s, u"apr"_s, u"may"_s, u"jun"_s,
                                      u"jul"_s, u"aug"_s, u"sep"_s, u"oct"_s, u"nov"_s, u"dec"_s};
    return numberOf(name, names);
}

constexpr auto patternOptions =
    QRegularExpression::CaseInsensitiveOption | QRegularExpression::UseUnicodePropertiesOption;

QString monthsPattern() {
    return uR"((Jan(?:uary|\.)?|Feb(?:ruary|\.)?|Mar(?:ch|\.)?|Apr(?:il|\.)?|May|June?\.?|July?\.?|Aug(?:ust|\.)?|Sept?(?:ember|\.)?|Oct(?:ober|\.)?|Nov(?:ember|\.)?|Dec(?:ember|\.)?))"_s;
}

QList<WrittenDate> datesIn(const QString& caption) {
    static const QRegularExpression usual(
        uR"((?:\b((?:Mon|Tues?|Wed(?:nes)?|Thu(?:rs?)?|Fri|Sat(?:ur)?|Sun)(?:day)?)\.?,? )?\b)"_s +
            monthsPattern() + uR"( (\d{1,2})(?:st|nd|rd|th)?(?![\d:])(?:,? (\d{4}))?)"_s,
        patternOptions);
    static const QRegularExpression dayFirst(uR"(\b(\d{1,2}) )"_s + monthsPattern() + uR"( (\d{4})\b)"_s,
                                             patternOptions);
    static const QRegularExpression digits(uR"(\b(\d{4})-(\d\d)-(\d\d)\b)"_s);
    QList<WrittenDate> dates;
    for (auto found = usual.globalMatch(caption); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        dates.append({.from = match.capturedStart(),
                      .to = match.capturedEnd(),
                      .weekday = weekdayOf(match.captured(1)),
                      .month = monthOf(match.captured(2)),
                      .day = match.captured(3).toInt(),
                      .year = match.captured(4).toInt()});
    }
    for (auto found = dayFirst.globalMatch(caption); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        dates.append({.from = match.capturedStart(),
                      .to = match.capturedEnd(),
                      .month = monthOf(match.captured(2)),
                      .day = match.captured(1).toInt(),
                      .year = match.captured(3).toInt()});
    }
    for (auto found = digits.globalMatch(caption); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        dates.append({.from = match.capturedStart(),
                      .to = match.capturedEnd(),
                      .month = match.captured(2).toInt(),
                      .day = match.captured(3).toInt(),
                      .year = match.captured(1).toInt()});
    }
    return dates;
}

/// "his first goal since Jan. 3, 2020" tells of another day.
bool isHistory(const QString& caption, const WrittenDate& date) {
    static const QRegularExpression words(
        uR"(\b(?:since|until|before|after|from|between|born|dated|back to|through|last|next|previous|on or about)(?: \w+)?,? ?$)"_s,
        patternOptions);
    constexpr qsizetype longest = 24;
    const qsizetype begin = std::max<qsizetype>(0, date.from - longest);
    return words.match(caption.sliced(begin, date.from - begin)).hasMatch();
}

bool isDay(const WrittenDate& date, const QDate& day) {
    return date.month == day.month() && date.day == day.day() && (date.year == 0 || date.year == day.year());
}

bool isOneOf(const WrittenDate& date, const QList<QDate>& days) {
    return std::any_of(days.begin(), days.end(), [&](const QDate& day) { return isDay(date, day); });
}

/// Beside the picture's own date one of another year is history: "the mark set on June 1, 2019".
bool isOtherYear(const WrittenDate& date, const QList<QDate>& days) {
    return date.year > 0 && !days.isEmpty() && date.year != days.constFirst().year();
}

QString shown(const QDate& day) {
    return QLocale::c().toString(day, u"MMMM d, yyyy"_s);
}

std::optional<Finding> judged(const WrittenDate& date, const QList<QDate>& days) {
    const auto wrong = [&date](const QString& text) {
        return Finding{.kind = FindingKind::wrongFact, .text = text, .from = date.from, .to = date.to};
    };
    if (!days.isEmpty() && !isOneOf(date, days)) {
        return wrong(u"The picture is of %1."_s.arg(shown(days.constFirst())));
    }
    const int year = date.year > 0 ? date.year : days.isEmpty() ? 0 : days.constFirst().year();
    const QDate told(year, date.month, date.day);
    if (date.year > 0 && !told.isValid()) {
        return wrong(u"There is no such day."_s);
    }
    if (date.weekday > 0 && told.isValid() && told.dayOfWeek() != date.weekday) {
        return wrong(u"%1 is a %2."_s.arg(shown(told), QLocale::c().dayName(told.dayOfWeek())));
    }
    return std::nullopt;
}

} // namespace

QList<QDate> daysOf(const QString& date, const std::optional<QDate>& local) {
    static const QRegularExpression pattern(uR"(^(\d{4})[-:]?(\d\d)[-:]?(\d\d)(?!\d))"_s);
    const QRegularExpressionMatch match = pattern.match(date);
    const QDate written(match.captured(1).toInt(), match.captured(2).toInt(), match.captured(3).toInt());
    QList<QDate> days;
    for (const QDate& day : {local.value_or(QDate()), written}) {
        if (day.isValid() && !days.contains(day)) {
            days.append(day);
        }
    }
    return days;
}

QList<Finding> dateFindings(const CheckedCaption& checked) {
    QList<Finding> findings;
    const QList<WrittenDate> dates = datesIn(checked.caption);
    const bool hasRight = std::any_of(dates.begin(), dates.end(),
                                      [&](const WrittenDate& date) { return isOneOf(date, checked.days); });
    for (const WrittenDate& date : dates) {
        const std::optional<Finding> finding = judged(date, checked.days);
        if (finding && !isHistory(checked.caption, date) && !(hasRight && isOtherYear(date, checked.days))) {
            findings.append(*finding);
        }
    }
    if (dates.isEmpty() && !checked.days.isEmpty() && checked.style != CaptionStyle::simple) {
        findings.append({.kind = FindingKind::missingDate,
                         .text = u"The date is missing: %1"_s.arg(shown(checked.days.constFirst()))});
    }
    return findings;
}

} // namespace ostrelle
