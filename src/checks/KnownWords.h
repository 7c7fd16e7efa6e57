// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

namespace ostrelle {

/// Tables of the words of American sports captions, all in the form of foldedWords(). Made by hand; they only
/// have to be good enough that what is unknown is worth a look.
namespace known {

/// "guard", "linebacker": a person's name follows.
bool isPosition(const QString& word);
/// "coach", "referee", "mascot": whoever is called that stands in no roster.
bool isOutsideRoster(const QString& word);
/// "cheerleaders", "fans", "bench": what stands before is a team.
bool isGroup(const QString& word);
/// A word that belongs to a venue, an event, a team, a place or the calendar and to no person.
bool isNoName(const QString& word);
/// "arena", "stadium": the last word of a venue's name.
bool isVenue(const QString& word);
/// "tigers", "crimson tide" by its last word: what teams are called.
bool isTeam(const QString& word);
/// One of these that is a surname, too: "Hill", "West".
bool isAlsoSurname(const QString& word);
/// A usual given name.
bool isGivenName(const QString& word);
/// "van", "de la": written small inside a name.
bool isParticle(const QString& word);
/// "jr", "iii".
bool isSuffix(const QString& word);
/// "Mike" and "Michael": given names of one person.
bool isSameGivenName(const QString& left, const QString& right);

/// The spellings of a state of the USA or a province of Canada, such as "Kentucky", "Ky.", "KY": the group
/// that has the word, folded. Empty if there is none.
QStringList spellingsOfState(const QString& folded);

} // namespace known

} // namespace ostrelle
