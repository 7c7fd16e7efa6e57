// SPDX-License-Identifier: GPL-3.0-or-later
#include "checks/Facts.h"

#include <QRegularExpression>
#include <QSet>
#include <algorithm>

#include "checks/Dates.h"
#include "checks/KnownWords.h"
#include "checks/Words.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr auto unicode = QRegularExpression::UseUnicodePropertiesOption;

/// Folded, with "Saint" and "Fort" as they are abbreviated.
QString placePhrase(QStringView text) {
    QString phrase = foldedPhrase(text);
    phrase.replace(u" saint "_s, u" st "_s).replace(u" fort "_s, u" ft "_s).replace(u" mount "_s, u" mt "_s);
    return phrase;
}

bool isSamePlace(const QString& left, const QString& right) {
    const QString one = placePhrase(left);
    const QString other = placePhrase(right);
    return one.contains(other) || other.contains(one);
}

/// A city with its state in a caption.
struct WrittenPlace {
    QString city;
    qsizetype from = 0;
    qsizetype to = 0;
    QStringList state; ///< its spellings, folded; or the facts' country
    qsizetype stateFrom = 0;
    qsizetype stateTo = 0;
};

/// "in Lexington, Ky.", "LEXINGTON, KENTUCKY - " and "; Lexington, KY, USA;".
QList<WrittenPlace> placesIn(const QString& caption, const QStringList& country) {
    static const QRegularExpression pattern(
        uR"((?:\b[Ii][Nn] |^ ?|; ?)((?:\p{Lu}[\p{L}'’.-]*[ -]?){1,4}), ?((?:\p{Lu}[\p{L}.]*)(?: \p{Lu}[\p{L}.]*)?))"_s,
        unicode);
    QList<WrittenPlace> places;
    for (auto found = pattern.globalMatch(caption); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        const QString both = match.captured(2);
        for (const QString& name : {both, both.section(u' ', 0, 0)}) {
            const QString folded = foldedWords(name).join(u' ');
            const QStringList known = known::spellingsOfState(folded);
            const QStringList state = known.isEmpty() && country.contains(folded) ? country : known;
            if (!state.isEmpty()) {
                places.append({.city = match.captured(1).trimmed(),
                               .from = match.capturedStart(1),
                               .to = match.capturedEnd(1),
                               .state = state,
                               .stateFrom = match.capturedStart(2),
                               .stateTo = match.capturedStart(2) + name.size()});
                break;
            }
        }
    }
    return places;
}

Finding wrongFact(const QString& text, qsizetype from, qsizetype to) {
    return {.kind = FindingKind::wrongFact, .text = text, .from = from, .to = to};
}

QList<Finding> placeFindings(const CheckedCaption& checked) {
    const QString city = checked.context.city.value_or(QString());
    const QString state = checked.context.state.value_or(QString());
    const QStringList spellings = known::spellingsOfState(foldedWords(state).join(u' '));
    QList<Finding> findings;
    const QString country = foldedWords(checked.context.country.value_or(QString())).join(u' ');
    const QStringList countries = country.isEmpty() ? QStringList() : QStringList{country};
    for (const WrittenPlace& place : placesIn(checked.caption, countries)) {
        if (!city.isEmpty() && !isSamePlace(place.city, city)) {
            findings.append(wrongFact(u"The facts have the city %1."_s.arg(city), place.from, place.to));
        } else if (!spellings.isEmpty() && place.state != spellings && place.state != countries) {
            findings.append(
                wrongFact(u"The facts have the state %1."_s.arg(state), place.stateFrom, place.stateTo));
        }
    }
    const bool isWanted = !city.isEmpty() && checked.style != CaptionStyle::simple;
    if (isWanted && findings.isEmpty() && !placePhrase(checked.caption).contains(placePhrase(city))) {
        findings.append({.kind = FindingKind::missingPlace, .text = u"The place is missing: %1"_s.arg(city)});
    }
    return findings;
}

/// The facts that a venue or a team may be named in, apart from the venue itself.
QString otherFacts(const CheckedCaption& checked) {
    QString facts = foldedPhrase(checked.context.event.value_or(QString()));
    for (const QString& keyword : checked.context.keywords) {
        facts += foldedPhrase(keyword);
    }
    return facts;
}

/// "St. John's Arena" and "St. John's Gym" may be one; two stadiums share but words such as these.
bool isCommonInVenues(const QString& word) {
    static const QSet<QString> words = {u"the"_s,    u"and"_s,        u"memorial"_s,
                                        u"state"_s,  u"university"_s, u"community"_s,
                                        u"sports"_s, u"municipal"_s,  u"national"_s};
    return known::isVenue(word) || words.contains(word);
}

bool hasCommonWord(const QString& left, const QString& right) {
    const QStringList words = foldedWords(right);
    const QStringList others = foldedWords(left);
    return std::any_of(others.begin(), others.end(), [&](const QString& word) {
        return words.contains(word) && !isCommonInVenues(word) && word.size() > 2;
    });
}

QList<Finding> venueFindings(const CheckedCaption& checked) {
    static const QRegularExpression pattern(
        uR"(\b(?:at|inside) (?:the )?((?:(?:St\.|Ft\.|Mt\.|[\p{Lu}\d][\p{L}\d'’&-]*)(?: (?:of|the|and|de|at) (?=\p{Lu}))? ?){1,7}))"_s,
        unicode);
    const QString venue = checked.context.location.value_or(QString());
    if (venue.isEmpty()) {
        return {};
    }
    QList<Finding> findings;
    for (auto found = pattern.globalMatch(checked.caption); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        const QString name = match.captured(1).trimmed();
        const QStringList words = foldedWords(name);
        const bool isVenue = words.size() > 1 && known::isVenue(words.last());
        if (isVenue && !isSamePlace(name, venue) && !hasCommonWord(name, venue) &&
            !otherFacts(checked).contains(foldedPhrase(name))) {
            findings.append(wrongFact(u"The facts have the venue %1."_s.arg(venue), match.capturedStart(1),
                                      match.capturedStart(1) + name.size()));
        }
    }
    return findings;
}

/// Names that one school or team goes by.
QStringList otherNames(const QString& folded) {
    static const QList<QStringList> groups = {{u"ole miss"_s, u"mississippi"_s},
                                              {u"uconn"_s, u"connecticut"_s},
                                              {u"umass"_s, u"massachusetts"_s},
                                              {u"pitt"_s, u"pittsburgh"_s},
                                              {u"penn"_s, u"pennsylvania"_s},
                                              {u"usc"_s, u"southern california"_s},
                                              {u"nc state"_s, u"north carolina state"_s},
                                              {u"unc"_s, u"north carolina"_s},
                                              {u"bama"_s, u"alabama"_s},
                                              {u"zags"_s, u"gonzaga"_s},
                                              {u"cal"_s, u"california"_s},
                                              {u"uk"_s, u"kentucky"_s},
                                              {u"usa"_s, u"us"_s, u"united states"_s, u"team usa"_s},
                                              {u"man united"_s, u"manchester united"_s}};
    for (const QStringList& group : groups) {
        if (group.contains(folded)) {
            return group;
        }
    }
    return {folded};
}

QString initialsOf(const QStringList& words) {
    QString initials;
    for (const QString& word : words) {
        initials += word.at(0);
    }
    return initials;
}

/// The two teams of an event such as "Kentucky vs. Alabama"; empty if it does not name two.
QStringList teamsOf(const QString& event) {
    static const QRegularExpression pattern(
        uR"(^(?:.*[:,–—] ?)?([^:,]+?) +(?:vs?\.?|versus|@|at) +([^:,]+?)(?:[:,(–—].*)?$)"_s,
        QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = pattern.match(event);
    return match.hasMatch() ? QStringList{match.captured(1), match.captured(2)} : QStringList();
}

bool isTeamOf(const QString& name, const QStringList& teams) {
    const QString phrase = foldedPhrase(name);
    const QStringList words = foldedWords(name);
    return std::any_of(teams.begin(), teams.end(), [&](const QString& team) {
        const QStringList names = otherNames(foldedWords(team).join(u' '));
        const bool isOther = std::any_of(names.begin(), names.end(), [&](const QString& other) {
            return phrase.contains(u' ' + other + u' ');
        });
        return isOther || hasCommonWord(name, team) ||
               initialsOf(foldedWords(team)) == words.join(QString()) ||
               initialsOf(words) == foldedWords(team).join(QString());
    });
}

/// A nickname alone may be either team's.
bool isOnlyNickname(const QStringList& words) {
    static const QSet<QString> beginnings = {
        u"crimson"_s, u"golden"_s, u"blue"_s,  u"red"_s,      u"scarlet"_s,    u"tar"_s,
        u"horned"_s,  u"demon"_s,  u"green"_s, u"fighting"_s, u"nittany"_s,    u"yellow"_s,
        u"black"_s,   u"mean"_s,   u"ragin"_s, u"runnin"_s,   u"thundering"_s, u"sun"_s,
        u"lady"_s,    u"trail"_s,  u"white"_s, u"river"_s,    u"sea"_s,        u"screaming"_s};
    return std::all_of(words.begin(), words.end(),
                       [](const QString& word) { return known::isTeam(word) || beginnings.contains(word); });
}

/// Where a caption names an opponent: "against Auburn", and "Kentucky at Auburn" where Kentucky plays.
QString opponentPattern(const QStringList& teams) {
    QStringList hosts;
    for (const QString& team : teams) {
        hosts.append(QRegularExpression::escape(team) + u" at "_s);
    }
    return uR"((?:\b(?:against|vs\.?|versus) (?:the )?|\b)"_s + hosts.join(u"|\\b"_s) +
           uR"()(?:(?:No\. ?|#)\d{1,2} )?((?>(?:(?:(?:\p{Lu}\.){1,3}|St\.|\p{Lu}[\p{L}'’&-]*)[ ]?){1,4}))(?!\s*\(?#?\d))"_s;
}

QList<Finding> teamFindings(const CheckedCaption& checked, const RosterNames& roster) {
    const QStringList teams = teamsOf(checked.context.event.value_or(QString()));
    QList<Finding> findings;
    if (teams.isEmpty()) {
        return findings;
    }
    const QRegularExpression pattern(opponentPattern(teams), unicode);
    for (auto found = pattern.globalMatch(checked.caption); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        QString name = match.captured(1).trimmed();
        while (name.endsWith(u'.')) {
            name.chop(1);
        }
        const QStringList words = nameWords(name);
        const bool isVenue = !words.isEmpty() && known::isVenue(words.last());
        const bool isPerson = words.isEmpty() || isVenue || known::isGivenName(words.first()) ||
                              !roster.meantBy(words).isEmpty();
        const bool isInFacts = std::any_of(words.begin(), words.end(), [&](const QString& word) {
            return roster.isOtherWord(word) || otherFacts(checked).contains(u' ' + word + u' ');
        });
        if (!isPerson && !isInFacts && !isOnlyNickname(words) && !isTeamOf(name, teams)) {
            findings.append(wrongFact(u"The facts have the event %1."_s.arg(*checked.context.event),
                                      match.capturedStart(1), match.capturedStart(1) + name.size()));
        }
    }
    return findings;
}

} // namespace

QList<Finding> factFindings(const CheckedCaption& checked, const RosterNames& roster) {
    return dateFindings(checked) + placeFindings(checked) + venueFindings(checked) +
           teamFindings(checked, roster);
}

} // namespace ostrelle
