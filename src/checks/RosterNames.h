// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/RosterEntry.h"

#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

namespace ostrelle {

/// A person of the roster.
struct RosterPlayer {
    QString name;        ///< as the roster writes it, without number and position
    QStringList words;   ///< folded, without "Jr." and the like
    QStringList numbers; ///< as written; empty if the lines give none
};

/// The persons in the lines of a roster. Its lines are the desk's own words: "12<TAB>Kentucky guard Dana
/// Krupin", "k12<TAB>Dana Krupin (12)" and "12<TAB>Krupin, Dana" all give Dana Krupin, number 12.
class RosterNames {
public:
    explicit RosterNames(const QList<RosterEntry>& entries);

    bool isEmpty() const { return m_players.isEmpty(); }
    const QList<RosterPlayer>& players() const { return m_players; }
    /// The players with just these words, folded and without suffixes.
    QList<RosterPlayer> named(const QStringList& words) const;
    /// The players whom the words may mean: with a nickname, an initial, one of two surnames, or the surname
    /// alone.
    QList<RosterPlayer> meantBy(const QStringList& words) const;
    /// The players with the number.
    QList<RosterPlayer> withNumber(const QString& number) const;
    /// The player whose name is spelled most alike, if one is.
    const RosterPlayer* nearest(const QStringList& words) const;
    /// Words of the lines that belong to no name: teams and positions.
    bool isOtherWord(const QString& word) const { return m_otherWords.contains(word); }

private:
    QList<RosterPlayer> m_players;
    QSet<QString> m_otherWords;
};

/// "07" and "7" are one number; "0" and "00" are two.
QString normalizedNumber(const QString& number);

/// Folded words without "Jr." and the like at their end.
QStringList nameWords(QStringView name);

} // namespace ostrelle
