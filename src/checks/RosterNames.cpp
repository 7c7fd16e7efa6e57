// SPDX-License-Identifier: GPL-3.0-or-later
#include "checks/RosterNames.h"

#include <QHash>
#include <QRegularExpression>
#include <algorithm>
#include <utility>

#include "checks/KnownWords.h"
#include "checks/Words.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// A line on its way to a player.
struct Line {
    QString number;
    QString text;            ///< the words, without number and position in brackets
    QList<QStringList> runs; ///< the capitalised stretches, folded
    QStringList spelled;     ///< the same as written
};

QString numberIn(const RosterEntry& entry) {
    static const QRegularExpression inText(uR"(\(#?(\d{1,3})\)|(?:#|\bNo\. ?)(\d{1,3})\b)"_s);
    static const QRegularExpression inCode(uR"(^\D*(\d{1,3})\D*$)"_s);
    const QRegularExpressionMatch told = inText.match(entry.name);
    if (told.hasMatch()) {
        return told.captured(1) + told.captured(2);
    }
    return inCode.match(entry.code).captured(1);
}

/// "Krupin, Dana" is Dana Krupin; "Krupin, Jr." is not.
QString inSpeakingOrder(const QString& text) {
    static const QRegularExpression listed(uR"(^\s*([^,\d]+),\s*([^,\d]+?)\s*$)"_s);
    const QRegularExpressionMatch match = listed.match(text);
    if (!match.hasMatch()) {
        return text;
    }
    const QStringList second = foldedWords(match.capturedView(2));
    const bool isName = !second.isEmpty() && second.size() <= 3 && !known::isSuffix(second.first()) &&
                        match.capturedView(2).at(0).isUpper() &&
                        std::none_of(second.begin(), second.end(), &known::isPosition);
    return isName ? match.captured(2) + u' ' + match.captured(1) : text;
}

QString cleaned(const RosterEntry& entry) {
    static const QRegularExpression brackets(uR"(\([^)]*\)|\[[^\]]*\])"_s);
    static const QRegularExpression numbers(uR"((?:#|\bNo\. ?)\d{1,3}\b|^\s*\d{1,3}\s+|\s\d{1,3}\s*$)"_s);
    static const QRegularExpression team(uR"(,?\s+(?:of|for)\s+(?:the\s+)?\p{Lu}.*$)"_s);
    QString text = entry.name.section(u'\t', 0, 0);
    for (const QRegularExpression& pattern : {brackets, numbers, team}) {
        text.replace(pattern, u" "_s);
    }
    return inSpeakingOrder(text.simplified());
}

bool isWrittenSmall(const Word& word) {
    return known::isParticle(foldedWords(word.text).join(QString()));
}

/// The stretches of capitalised words; a possessive and a comma end one, unless a suffix follows.
void findRuns(Line& line) {
    const QList<Word> words = wordsIn(line.text);
    const bool isCapitals = isAllCapitals(line.text);
    QStringList spelled;
    const auto end = [&] {
        if (!spelled.isEmpty()) {
            line.spelled.append(spelled.join(u' '));
            line.runs.append(nameWords(line.spelled.constLast()));
        }
        spelled.clear();
    };
    for (qsizetype index = 0; index < words.size(); ++index) {
        const Word& word = words.at(index);
        const QString folded = foldedWords(word.text).join(QString());
        const bool isInside = !spelled.isEmpty() && isWrittenSmall(word) && index + 1 < words.size();
        const bool isName = word.isCapitalized() || isInside || (spelled.isEmpty() && isWrittenSmall(word));
        if (!isName ||
            (known::isPosition(folded) && (isCapitals || spelled.isEmpty() || !word.isCapitalized()))) {
            end();
            continue;
        }
        spelled.append(word.text);
        const qsizetype next = index + 1 < words.size() ? words.at(index + 1).from : line.text.size();
        const QString gap = line.text.sliced(word.to, next - word.to);
        const bool isBeforeSuffix = index + 1 < words.size() &&
                                    known::isSuffix(foldedWords(words.at(index + 1).text).join(QString()));
        if (word.isPossessive() || ((gap.contains(u',') || gap.contains(u'-')) && !isBeforeSuffix)) {
            end();
        }
    }
    end();
}

/// In how many lines each word stands before the last two: a team's name does in most of its lines.
QHash<QString, qsizetype> countedBeginnings(const QList<Line>& lines) {
    QHash<QString, qsizetype> count;
    for (const Line& line : lines) {
        QSet<QString> seen;
        for (qsizetype run = 0; run < line.runs.size(); ++run) {
            const QStringList& words = line.runs.at(run);
            const bool isName = run + 1 == line.runs.size();
            for (qsizetype index = 0; index < words.size() - (isName ? 2 : 0); ++index) {
                seen.insert(words.at(index));
            }
        }
        for (const QString& word : std::as_const(seen)) {
            ++count[word];
        }
    }
    return count;
}

bool isInitial(const QString& word) {
    return word.size() == 1;
}

/// Whether one given name may stand for the other.
bool isSameGiven(const QString& left, const QString& right) {
    const QString& shorter = left.size() < right.size() ? left : right;
    const QString& longer = left.size() < right.size() ? right : left;
    return left == right || known::isSameGivenName(left, right) ||
           (shorter.size() >= 3 && longer.startsWith(shorter)) ||
           (isInitial(shorter) && longer.startsWith(shorter));
}

/// "J.D." of "John David Smith", or of a name that begins with J.
bool isInitialsOf(const QString& initials, const QStringList& name) {
    return initials.size() == 2 && name.size() >= 2 && name.first().startsWith(initials.at(0)) &&
           (name.size() == 2 || name.at(1).startsWith(initials.at(1)));
}

/// The words of a surname, from the particle on.
QStringList surnameOf(const QStringList& words) {
    for (qsizetype index = 1; index < words.size() - 1; ++index) {
        if (known::isParticle(words.at(index))) {
            return words.mid(index);
        }
    }
    return words.mid(words.size() - 1);
}

bool mayMean(const QStringList& words, const RosterPlayer& player) {
    const QStringList surname = surnameOf(player.words);
    if (words.size() == 1) {
        return player.words.mid(1).contains(words.first()) || player.words == words;
    }
    if (words == surname || (player.words.size() > 2 && words == player.words.mid(1))) {
        return true; // "van der Berg", or both parts of "O'Brien-Smith"
    }
    const QStringList rest = words.mid(1);
    const bool isSameEnd =
        rest == player.words.mid(1) || rest.last() == player.words.last() ||
        (player.words.size() > 2 && rest.size() == 1 && player.words.mid(1).contains(rest.first()));
    return player.words.size() > 1 && isSameEnd &&
           (isSameGiven(words.first(), player.words.first()) || isInitialsOf(words.first(), player.words) ||
            player.words.mid(1, player.words.size() - 2).contains(words.first()));
}

} // namespace

QString normalizedNumber(const QString& number) {
    const bool isZeros = number.count(u'0') == number.size();
    return isZeros ? number : QString::number(number.toInt());
}

QStringList nameWords(QStringView name) {
    QStringList words = foldedWords(name);
    while (words.size() > 1 && known::isSuffix(words.last())) {
        words.removeLast();
    }
    return words;
}

RosterNames::RosterNames(const QList<RosterEntry>& entries) {
    QList<Line> lines;
    for (const RosterEntry& entry : entries) {
        Line& line = lines.emplaceBack();
        line.number = normalizedNumber(numberIn(entry));
        line.text = cleaned(entry);
        findRuns(line);
    }
    const QHash<QString, qsizetype> beginnings = countedBeginnings(lines);
    const qsizetype usual = std::max<qsizetype>(3, lines.size() / 5);
    const auto isTeams = [&](const QString& word) {
        return (beginnings.value(word) >= usual && !known::isGivenName(word)) || known::isTeam(word);
    };
    for (const Line& line : std::as_const(lines)) {
        if (line.runs.isEmpty()) {
            continue;
        }
        for (qsizetype run = 0; run + 1 < line.runs.size(); ++run) {
            m_otherWords.unite(QSet<QString>(line.runs.at(run).begin(), line.runs.at(run).end()));
        }
        QStringList words = line.runs.constLast();
        QStringList spelled = line.spelled.constLast().split(u' ');
        while (words.size() > 2 && isTeams(words.first())) {
            m_otherWords.insert(words.takeFirst());
            spelled.removeFirst();
        }
        const auto same = std::find_if(m_players.begin(), m_players.end(),
                                       [&](const RosterPlayer& player) { return player.words == words; });
        if (same == m_players.end()) {
            m_players.append({.name = spelled.join(u' '),
                              .words = words,
                              .numbers = line.number.isEmpty() ? QStringList() : QStringList{line.number}});
        } else if (!line.number.isEmpty() && !same->numbers.contains(line.number)) {
            same->numbers.append(line.number);
        }
    }
    for (const RosterPlayer& player : std::as_const(m_players)) {
        for (const QString& word : player.words) {
            m_otherWords.remove(word);
        }
    }
}

QList<RosterPlayer> RosterNames::named(const QStringList& words) const {
    QList<RosterPlayer> found;
    std::copy_if(m_players.begin(), m_players.end(), std::back_inserter(found),
                 [&](const RosterPlayer& player) { return player.words == words; });
    return found;
}

QList<RosterPlayer> RosterNames::meantBy(const QStringList& words) const {
    QList<RosterPlayer> found;
    std::copy_if(m_players.begin(), m_players.end(), std::back_inserter(found),
                 [&](const RosterPlayer& player) { return mayMean(words, player); });
    return found;
}

QList<RosterPlayer> RosterNames::withNumber(const QString& number) const {
    QList<RosterPlayer> found;
    std::copy_if(m_players.begin(), m_players.end(), std::back_inserter(found),
                 [&](const RosterPlayer& player) { return player.numbers.contains(number); });
    return found;
}

const RosterPlayer* RosterNames::nearest(const QStringList& words) const {
    const QString name = words.join(u' ');
    const int most = name.size() > 8 ? 3 : 2;
    const RosterPlayer* best = nullptr;
    int least = most + 1;
    for (const RosterPlayer& player : m_players) {
        const int distance = editDistance(name, player.words.join(u' '), most);
        if (distance < least) {
            least = distance;
            best = &player;
        }
    }
    return best;
}

} // namespace ostrelle
