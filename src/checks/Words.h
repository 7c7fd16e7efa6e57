// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QStringView>

namespace ostrelle {

/// A word and its place in the text, in UTF-16 code units. "O'Brien-Smith", "J.J." and "Jr." are one word; a
/// possessive "'s" is not part of it.
struct Word {
    qsizetype from = 0;
    qsizetype to = 0;
    qsizetype end = 0; ///< behind the possessive, else as `to`
    QString text;

    bool isPossessive() const { return end > to; }
    bool isCapitalized() const;
};

QList<Word> wordsIn(const QString& text);

/// What two spellings of a word have in common: without case, accents, apostrophes and full stops; hyphens
/// divide words.
QStringList foldedWords(QStringView text);

/// foldedWords() joined with blanks, and a blank at each end: contains() then finds whole words only.
QString foldedPhrase(QStringView text);

/// True when the text has letters and none of them is in lower case.
bool isAllCapitals(QStringView text);

/// The fewest insertions, deletions, exchanges and swaps of neighbours that make one text the other; `most`
/// + 1 if there are more.
int editDistance(QStringView left, QStringView right, int most);

} // namespace ostrelle
