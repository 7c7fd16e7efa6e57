// SPDX-License-Identifier: GPL-3.0-or-later
#include "checks/People.h"

#include <QRegularExpression>
#include <algorithm>
#include <utility>

#include "checks/Credit.h"
#include "checks/KnownWords.h"
#include "checks/Words.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Everything in the facts, to look names up in.
QString foldedFacts(const CheckedCaption& checked) {
    QString facts;
    const XMPContext& context = checked.context;
    for (const std::optional<QString>& text : {context.city, context.state, context.country, context.location,
                                               context.event, checked.rights, checked.creator}) {
        facts += foldedPhrase(text.value_or(QString()));
    }
    for (const QString& keyword : context.keywords) {
        facts += foldedPhrase(keyword);
    }
    return facts;
}

/// A stretch of capitalised words, by their indexes.
struct Run {
    qsizetype first = 0;
    qsizetype last = 0; ///< included

    qsizetype size() const { return last - first + 1; }
};

class Reader {
public:
    Reader(const CheckedCaption& checked, const RosterNames& roster)
        : m_caption(checked.caption)
        , m_roster(roster)
        , m_facts(foldedFacts(checked))
        , m_body(bodyOf(checked))
        , m_isCapitals(isAllCapitals(checked.caption.sliced(m_body.from, m_body.to - m_body.from))) {
        for (const Word& word : wordsIn(m_caption)) {
            if (word.from >= m_body.from && word.to <= m_body.to) {
                m_words.append(word);
                m_folded.append(foldedWords(word.text).join(u' '));
            }
        }
    }

    QList<PersonMention> read() {
        for (const Run& run : runs()) {
            readRun(run);
        }
        shareNumbers();
        return m_people;
    }

private:
    QString gapBehind(qsizetype index) const {
        const qsizetype end = index + 1 < m_words.size() ? m_words.at(index + 1).from : m_body.to;
        return m_caption.sliced(m_words.at(index).to, end - m_words.at(index).to);
    }

    bool isNumber(qsizetype index) const { return m_words.at(index).text.at(0).isDigit(); }

    /// "N.Y." in "in Syracuse, N.Y. McSorley made 19 saves".
    bool isStateAtEnd(qsizetype index) const {
        return index > 0 && m_words.at(index).text.endsWith(u'.') && gapBehind(index - 1) == u", "_s &&
               !known::spellingsOfState(m_folded.at(index)).isEmpty();
    }

    /// Whether the word goes on with the stretch that ends before it.
    bool isContinuing(qsizetype index) const {
        const QString gap = gapBehind(index - 1);
        const bool isSuffix = known::isSuffix(m_folded.at(index)) && m_words.at(index).isCapitalized();
        static const QRegularExpression nickname(uR"(^ ?[“"'‘(]$|^[”"'’)] ?$|^ [“"'‘(]$|^ $)"_s);
        const bool isJoined = nickname.match(gap).hasMatch() || (isSuffix && gap == u", "_s);
        if (!isJoined || isNumber(index) || isStateAtEnd(index - 1)) {
            return false;
        }
        const bool isParticle =
            known::isParticle(m_folded.at(index)) && index + 1 < m_words.size() &&
            (m_words.at(index + 1).isCapitalized() || known::isParticle(m_folded.at(index + 1)));
        return m_words.at(index).isCapitalized() || isParticle;
    }

    QList<Run> runs() const {
        QList<Run> found;
        for (qsizetype index = 0; index < m_words.size(); ++index) {
            const bool isStart =
                (m_words.at(index).isCapitalized() && !isNumber(index)) ||
                (known::isParticle(m_folded.at(index)) && index + 1 < m_words.size() &&
                 m_words.at(index + 1).isCapitalized() && !known::isNoName(m_folded.at(index)));
            if (!isStart) {
                continue;
            }
            Run run{.first = index, .last = index};
            while (!m_words.at(run.last).isPossessive() && run.last + 1 < m_words.size() &&
                   isContinuing(run.last + 1)) {
                ++run.last;
            }
            found.append(run);
            index = run.last;
        }
        return found;
    }

    QStringList wordsOf(qsizetype first, qsizetype last) const {
        const qsizetype from = m_words.at(first).from;
        return nameWords(QStringView(m_caption).sliced(from, m_words.at(last).to - from));
    }

    /// Finds the players in the stretch, the longest names first; the rest may be somebody else.
    void readRun(Run run) {
        qsizetype first = run.first;
        while (first <= run.last) {
            const qsizetype length = playerAt(first, run.last);
            if (length > 0) {
                judgeRest({.first = run.first, .last = first - 1});
                first += length;
                run.first = first;
            } else {
                ++first;
            }
        }
        judgeRest(run);
    }

    /// Takes a player whose name begins at the word. Returns how many words it has; 0 if there is none.
    qsizetype playerAt(qsizetype first, qsizetype last) {
        constexpr qsizetype longest = 6;
        for (qsizetype end = std::min(last, first + longest); end >= first; --end) {
            const QStringList words = wordsOf(first, end);
            QList<RosterPlayer> players = m_roster.named(words);
            if (players.isEmpty() && (end > first || isWholeSurname(first, last))) {
                players = m_roster.meantBy(words);
            }
            if (!players.isEmpty()) {
                const auto number = numberBeside(first, end);
                take(first, end, players, number, true);
                return end - first + 1;
            }
        }
        return 0;
    }

    /// A surname alone counts where no given name of another person stands before it.
    bool isWholeSurname(qsizetype first, qsizetype last) const {
        if (first != last) {
            return false; // "Krupin" in "Krupin Arena" is none
        }
        const bool isBehindName = first > 0 && gapBehind(first - 1) == u" "_s &&
                                  !m_words.at(first - 1).isPossessive() &&
                                  m_words.at(first - 1).isCapitalized() && !isNumber(first - 1);
        return !isBehindName;
    }

    void take(qsizetype first, qsizetype last, const QList<RosterPlayer>& players,
              const std::optional<JerseyNumber>& number, bool isKnown) {
        const qsizetype from = m_words.at(first).from;
        const qsizetype to = m_words.at(last).to;
        m_people.append({.name = m_caption.sliced(from, to - from),
                         .from = from,
                         .to = to,
                         .number = number,
                         .players = players,
                         .isKnown = isKnown});
    }

    /// "(12)", "#12" or "No. 12" behind the name.
    std::optional<JerseyNumber> numberBehind(qsizetype last) const {
        static const QRegularExpression pattern(
            uR"(\G['’]?s?,? ?(?:\(#?(\d{1,3})\)|\((?:No\. ?)(\d{1,3})\)|#\s?(\d{1,3})\b|No\. ?(\d{1,3})\b))"_s);
        return numberAt(pattern, m_words.at(last).to);
    }

    /// "#12" or "No. 12" before the name.
    std::optional<JerseyNumber> numberBefore(qsizetype first) const {
        static const QRegularExpression pattern(uR"((?:#|\bNo\. ?)(\d{1,3}),? $)"_s);
        constexpr qsizetype longest = 12;
        const qsizetype end = m_words.at(first).from;
        const qsizetype begin = std::max<qsizetype>(0, end - longest);
        const QRegularExpressionMatch match = pattern.match(m_caption.sliced(begin, end - begin));
        if (!match.hasMatch()) {
            return std::nullopt;
        }
        return JerseyNumber{.number = normalizedNumber(match.captured(1)),
                            .from = begin + match.capturedStart(1),
                            .to = begin + match.capturedEnd(1)};
    }

    std::optional<JerseyNumber> numberBeside(qsizetype first, qsizetype last) const {
        const auto behind = numberBehind(last);
        return behind ? behind : numberBefore(first);
    }

    std::optional<JerseyNumber> numberAt(const QRegularExpression& pattern, qsizetype offset) const {
        const QRegularExpressionMatch match = pattern.match(m_caption, offset);
        for (int group = 1; match.hasMatch() && group <= match.lastCapturedIndex(); ++group) {
            if (match.capturedStart(group) >= 0) {
                return JerseyNumber{.number = normalizedNumber(match.captured(group)),
                                    .from = match.capturedStart(group),
                                    .to = match.capturedEnd(group)};
            }
        }
        return std::nullopt;
    }

    bool isInFacts(qsizetype first, qsizetype last) const {
        const qsizetype from = m_words.at(first).from;
        const auto phrase = foldedPhrase(QStringView(m_caption).sliced(from, m_words.at(last).to - from));
        return m_facts.contains(phrase);
    }

    /// Whether the word belongs to a team, place or event.
    bool isNoName(qsizetype index) const {
        const QString& word = m_folded.at(index);
        return known::isNoName(word) || known::isPosition(word) || known::isOutsideRoster(word) ||
               m_roster.isOtherWord(word) || m_facts.contains(u' ' + word + u' ');
    }

    /// What is left of a stretch once the players are taken.
    void judgeRest(Run run) {
        if (run.size() < 1 || m_isCapitals || isOutsideRoster(run)) {
            return;
        }
        const auto number = numberBehind(run.last);
        while (run.size() > 0 && isNoName(run.first) &&
               !(run.size() == 2 && known::isGivenName(m_folded.at(run.first)) &&
                 !isInFacts(run.first, run.first) && !isNoName(run.last))) {
            ++run.first;
        }
        if (run.size() > 4) {
            return; // too long for a name
        }
        if (number ? isNumberedPerson(run) : isPerson(run)) {
            take(run.first, run.last, {}, number, isInFacts(run.first, run.last));
        }
    }

    bool isNumberedPerson(const Run& run) const {
        if (run.size() < 1 || isInFacts(run.first, run.last)) {
            return false;
        }
        const bool isWord = run.size() == 1 && run.first == 0 && isNoName(run.first);
        return !isWord && !(isNoName(run.last) && !known::isAlsoSurname(m_folded.at(run.last)));
    }

    /// Without a number, only where it can hardly be anything else.
    bool isPerson(const Run& run) const {
        if (run.size() < 2 || run.size() > 4 || isInFacts(run.first, run.last) || isPlaceOrTeam(run)) {
            return false;
        }
        const bool hasGivenName = known::isGivenName(m_folded.at(run.first));
        for (qsizetype index = run.first; index <= run.last; ++index) {
            const bool isSurname =
                hasGivenName && index > run.first && known::isAlsoSurname(m_folded.at(index));
            if (isNoName(index) && !isSurname && !known::isSuffix(m_folded.at(index)) &&
                !(index == run.first && hasGivenName)) {
                return false;
            }
        }
        return hasGivenName || isBehindPosition(run) || isInitials(run.first) || isAmongPeople(run);
    }

    /// "Auburn's Tess Wick", "Tess Wick, right,", "beside Tess Wick", "Tess Wick of Auburn", and "and Tess
    /// Wick" behind another person.
    bool isAmongPeople(const Run& run) const {
        static const QSet<QString> before = {u"beside"_s,  u"alongside"_s, u"hugs"_s,    u"congratulates"_s,
                                             u"tackles"_s, u"guards"_s,    u"defends"_s, u"greets"_s};
        static const QRegularExpression behind(
            uR"(\G(?:, (?:left|right|center|top|bottom|rear|foreground|background)\b| of (?:the )?(?=\p{Lu})))"_s);
        if (behind.match(m_caption, m_words.at(run.last).to).hasMatch()) {
            return true;
        }
        if (run.first == 0) {
            return false;
        }
        const Word& last = m_words.at(run.first - 1);
        const QString gap = gapBehind(run.first - 1);
        const bool isBehindPerson = last.text == u"and" && !m_people.isEmpty() && run.first > 1 &&
                                    last.from - m_people.constLast().to < 8;
        return isBehindPerson || (last.isPossessive() && last.isCapitalized() && gap.endsWith(u"s "_s)) ||
               (gap == u" "_s && before.contains(m_folded.at(run.first - 1)));
    }

    bool isInitials(qsizetype index) const {
        static const QRegularExpression pattern(uR"(^(?:\p{Lu}\.){1,3}$|^[A-Z]{2}$)"_s);
        return pattern.match(m_words.at(index).text).hasMatch();
    }

    bool isBehindPosition(const Run& run) const {
        return run.first > 0 && gapBehind(run.first - 1) == u" "_s &&
               known::isPosition(m_folded.at(run.first - 1));
    }

    /// "the Crimson Tide", "in Baton Rouge", "at Fenner Hall", "Crimson Tide fans", "Baton Rouge, La.".
    bool isPlaceOrTeam(const Run& run) const {
        static const QSet<QString> before = {u"the"_s,  u"at"_s,     u"in"_s,     u"of"_s,
                                             u"near"_s, u"inside"_s, u"outside"_s};
        if (run.first > 0 && gapBehind(run.first - 1) == u" "_s &&
            before.contains(m_folded.at(run.first - 1))) {
            return true;
        }
        if (run.last + 1 >= m_words.size()) {
            return false;
        }
        const QString gap = gapBehind(run.last);
        const QString& next = m_folded.at(run.last + 1);
        if (gap == u" "_s && !m_words.at(run.last).isPossessive()) {
            return known::isGroup(next) ||
                   (known::isPosition(next) && !m_words.at(run.last + 1).isCapitalized());
        }
        return (gap == u", "_s && !known::spellingsOfState(next).isEmpty() &&
                m_words.at(run.last + 1).isCapitalized()) ||
               gap.startsWith(u"-"_s);
    }

    /// "head coach Wren Doyle", "Wren Doyle, the Alabama coach".
    bool isOutsideRoster(const Run& run) const {
        for (qsizetype index = run.first; index >= 0 && index + 4 > run.first; --index) {
            if (known::isOutsideRoster(m_folded.at(index))) {
                return true;
            }
            if (index > 0 && gapBehind(index - 1).trimmed().size() > 0) {
                break;
            }
        }
        for (qsizetype index = run.first; index <= run.last; ++index) {
            if (known::isOutsideRoster(m_folded.at(index))) {
                return true;
            }
        }
        static const QRegularExpression apposition(
            uR"(\G(?:['’]s)?,? (?:\(?)((?:[\p{L}'’.-]+ ){0,5}[\p{L}'’]+)[,.)])"_s);
        const QRegularExpressionMatch match = apposition.match(m_caption, m_words.at(run.last).to);
        if (match.hasMatch() && m_caption.at(m_words.at(run.last).to) == u',') {
            const QStringList words = foldedWords(match.capturedView(1));
            return std::any_of(words.begin(), words.end(), &known::isOutsideRoster);
        }
        return false;
    }

    /// In "John Smith/Mike Jones (44)" the number is both men's.
    void shareNumbers() {
        static const QRegularExpression divided(uR"(^/[\p{Ll} ]*$)"_s);
        for (qsizetype index = m_people.size() - 2; index >= 0; --index) {
            PersonMention& person = m_people[index];
            const PersonMention& next = m_people.at(index + 1);
            const qsizetype length = next.from - person.to;
            if (!person.number && next.number && length > 0 &&
                divided.match(m_caption.sliced(person.to, length)).hasMatch()) {
                person.number = next.number;
            }
        }
    }

    QString m_caption;
    const RosterNames& m_roster;
    QString m_facts;
    TextSpan m_body;
    bool m_isCapitals;
    QList<Word> m_words;
    QStringList m_folded;
    QList<PersonMention> m_people;
};

} // namespace

QList<PersonMention> peopleIn(const CheckedCaption& checked, const RosterNames& roster) {
    return Reader(checked, roster).read();
}

} // namespace ostrelle
