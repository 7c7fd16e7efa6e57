// SPDX-License-Identifier: GPL-3.0-or-later
#include "checks/CaptionCheck.h"

#include <QHash>
#include <algorithm>
#include <utility>

#include "checks/Credit.h"
#include "checks/Facts.h"
#include "checks/Form.h"
#include "checks/People.h"
#include "checks/Words.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// In UTF-16 code units. Twice what IPTC has room for: something longer is no caption.
constexpr qsizetype longestJudged = 4000;

QString namesOf(const QList<RosterPlayer>& players) {
    QStringList names;
    for (const RosterPlayer& player : players) {
        names.append(player.name);
    }
    return names.join(u" and "_s);
}

/// Whether one of the players may wear the number; a player without one may wear any.
bool mayWear(const QList<RosterPlayer>& players, const QString& number) {
    return std::any_of(players.begin(), players.end(), [&](const RosterPlayer& player) {
        return player.numbers.isEmpty() || player.numbers.contains(number);
    });
}

QString mismatchText(const PersonMention& person, const RosterNames& roster) {
    const QString& number = person.number->number;
    const QList<RosterPlayer> wearers = roster.withNumber(number);
    const QString whose = wearers.isEmpty() ? u"The roster has no number %1."_s.arg(number)
                                            : u"The roster has %1 under %2."_s.arg(namesOf(wearers), number);
    if (person.players.isEmpty()) {
        return whose;
    }
    const RosterPlayer& player = person.players.constFirst();
    return u"The roster has %1 under %2."_s.arg(player.name, player.numbers.join(u" and "_s)) +
           (wearers.isEmpty() ? QString() : u' ' + whose);
}

QString unknownText(const PersonMention& person, const RosterNames& roster) {
    const RosterPlayer* nearest = roster.nearest(nameWords(person.name));
    return nearest ? u"“%1” is not in the roster. It has %2."_s.arg(person.name, nearest->name)
                   : u"“%1” is neither in the roster nor in the facts."_s.arg(person.name);
}

QList<Finding> nameFindings(const CheckedCaption& checked, const RosterNames& roster) {
    QList<Finding> findings;
    if (roster.isEmpty()) {
        return findings;
    }
    for (const PersonMention& person : peopleIn(checked, roster)) {
        const bool isStranger = person.players.isEmpty() && !person.isKnown;
        if (isStranger) {
            findings.append({.kind = FindingKind::unknownName,
                             .text = unknownText(person, roster),
                             .from = person.from,
                             .to = person.to});
        }
        const bool isKnownPlayer = !person.players.isEmpty();
        if (person.number &&
            (isStranger || (isKnownPlayer && !mayWear(person.players, person.number->number)))) {
            findings.append({.kind = FindingKind::numberMismatch,
                             .text = mismatchText(person, roster),
                             .from = person.number->from,
                             .to = person.number->to});
        }
    }
    return findings;
}

/// The words of a caption, and where they have room for one other word.
QStringList formsOf(const QStringList& words) {
    QStringList forms = {words.join(u' ')};
    constexpr qsizetype fewest = 8; // in a shorter one, each word matters
    constexpr qsizetype most = 150; // no caption is that long
    const bool isUsual = words.size() >= fewest && words.size() <= most;
    for (qsizetype index = 0; isUsual && index < words.size(); ++index) {
        QStringList others = words;
        others[index] = u"*"_s;
        forms.append(others.join(u' '));
    }
    return forms;
}

/// Names and numbers tell pictures apart.
bool isOnlySmallDifference(const QString& left, const QString& right) {
    const QList<Word> one = wordsIn(left);
    const QList<Word> other = wordsIn(right);
    if (one.size() != other.size()) {
        return false;
    }
    for (qsizetype index = 0; index < one.size(); ++index) {
        const bool isSame = foldedWords(one.at(index).text) == foldedWords(other.at(index).text);
        const auto isPlain = [](const Word& word) {
            return !word.isCapitalized() && !word.text.at(0).isDigit();
        };
        if (!isSame && !(isPlain(one.at(index)) && isPlain(other.at(index)))) {
            return false;
        }
    }
    return true;
}

} // namespace

QList<Finding> checkCaption(const CheckedCaption& checked, const RosterNames& roster) {
    QList<Finding> findings = formFindings(checked);
    if (checked.caption.trimmed().isEmpty()) {
        return findings;
    }
    if (checked.caption.size() > longestJudged) {
        return findings;
    }
    findings += nameFindings(checked, roster) + factFindings(checked, roster) + creditFindings(checked);
    std::sort(findings.begin(), findings.end(), [](const Finding& left, const Finding& right) {
        return std::pair(left.from, left.kind) < std::pair(right.from, right.kind);
    });
    return findings;
}

QList<std::optional<Finding>> repeatedCaptions(const QStringList& captions) {
    QHash<size_t, qsizetype> first; // by the hash of a form, the first caption with it
    QList<std::optional<Finding>> findings(captions.size());
    const auto mark = [&](qsizetype index, bool isSame) {
        const QString text = isSame ? u"Another picture has the same caption."_s
                                    : u"Another picture has nearly the same caption."_s;
        findings[index] = Finding{
            .kind = FindingKind::sameAsAnother, .text = text, .from = 0, .to = captions.at(index).size()};
    };
    for (qsizetype index = 0; index < captions.size(); ++index) {
        const QStringList words = foldedWords(captions.at(index));
        for (const QString& form : words.isEmpty() ? QStringList() : formsOf(words)) {
            const size_t hash = qHash(form, size_t{1});
            const qsizetype other = first.value(hash, index);
            const bool isSame = other != index && foldedWords(captions.at(other)) == words;
            if (other == index) {
                first.insert(hash, index);
            } else if (isSame || isOnlySmallDifference(captions.at(other), captions.at(index))) {
                mark(other, isSame);
                mark(index, isSame);
                break;
            }
        }
    }
    return findings;
}

} // namespace ostrelle
