// SPDX-License-Identifier: GPL-3.0-or-later
#include "checks/Words.h"

#include <QRegularExpression>
#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Initials with their full stops, abbreviations before and after names, and then all other words.
const QRegularExpression& wordPattern() {
    static const QRegularExpression pattern(
        uR"((?:\p{Lu}\.){1,4}(?=\W|$)|(?:St|Ste|Mt|Ft|Dr|Mr|Mrs|Ms|Jr|Sr)\.|[\p{L}\p{M}\p{N}]+(?:['’\-‐][\p{L}\p{M}\p{N}]+)*)"_s,
        QRegularExpression::UseUnicodePropertiesOption);
    return pattern;
}

/// Letters that Unicode does not decompose into a base letter and an accent.
QString baseLetters(QChar letter) {
    switch (letter.unicode()) {
    case u'ø':
        return u"o"_s;
    case u'ł':
        return u"l"_s;
    case u'đ':
    case u'ð':
        return u"d"_s;
    case u'ß':
        return u"ss"_s;
    case u'æ':
        return u"ae"_s;
    case u'œ':
        return u"oe"_s;
    case u'þ':
        return u"th"_s;
    case u'ı':
        return u"i"_s;
    default:
        return letter;
    }
}

QString withoutAccents(QStringView text) {
    const QString decomposed = text.toString().normalized(QString::NormalizationForm_KD).toLower();
    QString plain;
    for (const QChar letter : decomposed) {
        if (!letter.isMark()) {
            plain += baseLetters(letter);
        }
    }
    return plain;
}

bool isApostrophe(QChar character) {
    return character == u'\'' || character == u'’' || character == u'‘' || character == u'ʼ' ||
           character == u'`';
}

} // namespace

bool Word::isCapitalized() const {
    return !text.isEmpty() && text.at(0).isUpper();
}

QList<Word> wordsIn(const QString& text) {
    QList<Word> words;
    auto matches = wordPattern().globalMatch(text);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        Word word{
            .from = match.capturedStart(), .to = match.capturedEnd(), .end = match.capturedEnd(), .text = {}};
        const QStringView found = match.capturedView();
        if (found.size() > 2 && isApostrophe(found.at(found.size() - 2)) && found.back().toLower() == u's') {
            word.to -= 2;
        } else if (found.back().toLower() == u's' && word.to < text.size() &&
                   isApostrophe(text.at(word.to))) {
            word.end += 1; // "the Wildcats' bench"
        }
        word.text = text.sliced(word.from, word.to - word.from);
        words.append(word);
    }
    return words;
}

QStringList foldedWords(QStringView text) {
    QStringList words;
    QString word;
    const QString plain = withoutAccents(text);
    for (const QChar character : plain) {
        if (character.isLetterOrNumber()) {
            word += character;
        } else if (!isApostrophe(character) && character != u'.' && !word.isEmpty()) {
            words.append(std::exchange(word, {}));
        }
    }
    if (!word.isEmpty()) {
        words.append(word);
    }
    return words;
}

QString foldedPhrase(QStringView text) {
    return u' ' + foldedWords(text).join(u' ') + u' ';
}

bool isAllCapitals(QStringView text) {
    const bool hasLetter = std::any_of(text.begin(), text.end(), [](QChar c) { return c.isUpper(); });
    return hasLetter && std::none_of(text.begin(), text.end(), [](QChar c) { return c.isLower(); });
}

int editDistance(QStringView left, QStringView right, int most) {
    if (std::abs(left.size() - right.size()) > most) {
        return most + 1;
    }
    const auto columns = static_cast<std::size_t>(right.size()) + 1;
    std::vector<int> beforeLast(columns);
    std::vector<int> last(columns);
    std::vector<int> row(columns);
    for (std::size_t column = 0; column < columns; ++column) {
        last[column] = static_cast<int>(column);
    }
    for (qsizetype i = 0; i < left.size(); ++i) {
        row[0] = static_cast<int>(i) + 1;
        for (qsizetype j = 0; j < right.size(); ++j) {
            const auto at = static_cast<std::size_t>(j);
            const int exchanged = last[at] + (left[i] == right[j] ? 0 : 1);
            row[at + 1] = std::min({last[at + 1] + 1, row[at] + 1, exchanged});
            if (i > 0 && j > 0 && left[i] == right[j - 1] && left[i - 1] == right[j]) {
                row[at + 1] = std::min(row[at + 1], beforeLast[at - 1] + 1);
            }
        }
        std::swap(beforeLast, last);
        std::swap(last, row);
    }
    return std::min(last[columns - 1], most + 1);
}

} // namespace ostrelle
