// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ContextBlock.h"

#include "core/Iso8601.h"

#include <QDateTime>
#include <QLocale>
#include <QStringList>
#include <algorithm>
#include <array>
#include <cstddef>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Month names as the Associated Press abbreviates them in a date.
constexpr std::array apMonths = {u"Jan.", u"Feb.", u"March", u"April", u"May",  u"June",
                                 u"July", u"Aug.", u"Sept.", u"Oct.",  u"Nov.", u"Dec."};
constexpr std::array imagnMonths = {u"Jan",  u"Feb", u"March", u"April", u"May", u"June",
                                    u"July", u"Aug", u"Sept",  u"Oct",   u"Nov", u"Dec"};

template <typename Names>
QString monthName(const Names& names, const QDate& day) {
    return QString::fromUtf16(names.at(static_cast<std::size_t>(day.month() - 1)));
}

QString present(const std::optional<QString>& value) {
    return value.value_or(QString());
}

QString rightsLine(const CaptionFacts& facts) {
    const QString rights = present(facts.rights);
    if (!rights.isEmpty()) {
        return rights;
    }
    return facts.defaultRightsFallback.trimmed().isEmpty() ? QString() : facts.defaultRightsFallback;
}

QString teamsLine(const CaptionFacts& facts) {
    QStringList entries;
    for (const TeamIdentity& team : {facts.team1, facts.team2}) {
        if (facts.useTeamIdentification && !team.name.isEmpty()) {
            entries.append(u"%1 (wearing %2 jerseys)"_s.arg(team.name, team.jerseyColor.toLower()));
        }
    }
    return entries.join(u" vs. "_s);
}

} // namespace

std::optional<QString> dateText(const QString& dateISO8601, CaptionStyle style, const QTimeZone& zone) {
    const std::optional<QDateTime> moment = parseIso8601(dateISO8601);
    if (!moment) {
        return std::nullopt;
    }
    const QDate day = moment->toTimeZone(zone).date();
    const QLocale english = QLocale::c();
    const QString dayAndYear = u" %1, %2"_s.arg(day.day()).arg(day.year());
    switch (style) {
    case CaptionStyle::apSports:
        return english.dayName(day.dayOfWeek()) + u", "_s + monthName(apMonths, day) + dayAndYear;
    case CaptionStyle::gettySports:
        return english.monthName(day.month()) + dayAndYear;
    case CaptionStyle::imagnImages:
        return monthName(imagnMonths, day) + dayAndYear;
    case CaptionStyle::simple:
        break;
    }
    return std::nullopt;
}

QString contextBlock(const CaptionFacts& facts, const QTimeZone& zone) {
    QStringList lines;
    const auto add = [&lines](const QString& label, const QString& value) {
        if (!value.isEmpty()) {
            lines.append(label + u": "_s + value);
        }
    };
    const XMPContext& context = facts.context;
    QStringList place = {present(context.city), present(context.state), present(context.country)};
    place.removeAll(QString());
    const QString date = present(context.dateISO8601);
    add(u"Event"_s, present(context.event));
    add(u"Venue"_s, present(context.location));
    add(u"Place"_s, place.join(u", "_s));
    add(u"Date"_s, date);
    add(u"Rights"_s, rightsLine(facts));
    add(u"Sport"_s, label(facts.sport));
    add(u"Teams"_s, teamsLine(facts));
    add(u"Audio Note"_s, present(facts.audioNote));
    add(u"DateText"_s, present(dateText(date, facts.captionStyle, zone)));
    add(u"Keywords"_s,
        context.keywords.first(std::min<qsizetype>(context.keywords.size(), 10)).join(u", "_s));
    return u"Context:\n- "_s + lines.join(u"\n- "_s) + u'\n';
}

QString existingCaptionLine(const CaptionFacts& facts) {
    return u"Existing caption (may be minimal): "_s + facts.defaultCaption;
}

QString buildBatchContext(const CaptionFacts& facts, const QTimeZone& zone) {
    return contextBlock(facts, zone) + u'\n' + existingCaptionLine(facts);
}

} // namespace ostrelle
