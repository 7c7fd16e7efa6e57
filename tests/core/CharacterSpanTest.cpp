// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/CharacterSpan.h"

#include <gtest/gtest.h>

#include <QStringList>
#include <QTextBoundaryFinder>
#include <random>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// The plain algorithm, one character at a time.
CharacterSpan knownSpan(const QString& text, qsizetype most) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    CharacterSpan span;
    while (span.characters < most && finder.toNextBoundary() > 0) {
        span = {span.characters + 1, finder.position()};
    }
    return span;
}

} // namespace

TEST(CharacterSpan, EndsBetweenCharacters) {
    const struct {
        QString text;
        qsizetype most;
        CharacterSpan span;
    } rows[] = {
        {u""_s, 5, {0, 0}},
        {u"abc\ndef"_s, 0, {0, 0}},
        {u"abc\ndef"_s, 5, {5, 5}},
        {u"abc\ndef"_s, 9, {7, 7}},
        {u"ab\r\ncd"_s, 2, {2, 2}},
        {u"ab\r\ncd"_s, 3, {3, 4}}, // CR LF is one
        {u"a\r\r\n\n"_s, 9, {4, 5}},
        {u"\u00E9e\u0301\nx"_s, 2, {2, 3}}, // both ways to write é
        {u"\U0001F44D\U0001F3FDx"_s, 1, {1, 4}},
        {u"\n\U0001F3FD"_s, 9, {2, 3}}, // a skin tone with nothing to colour
        {u"\u2600\uFE0F\u0301x"_s, 1, {1, 3}},
        {u"\U0001F1FA\U0001F1F8\U0001F1E9\U0001F1EA"_s, 1, {1, 4}},    // two flags
        {u"\U0001F468\u200D\U0001F469\u200D\U0001F467x"_s, 1, {1, 8}}, // a family of three
        {u"\uD55C\uAD6D"_s, 9, {2, 2}},                                // Hangul syllables
        {u"\u1112\u1161\u11ABx"_s, 1, {1, 3}},                         // one syllable, in parts
    };
    for (const auto& row : rows) {
        EXPECT_EQ(spanOfCharacters(row.text, row.most), row.span) << row.text.toStdString();
    }
}

TEST(CharacterSpan, AgreesWithTheWholeAlgorithmOnAnyMixture) {
    const QStringList pieces =
        u"a 7 \t \n \r \r\n \u00AD \u00A9 \u02FF "
        "\u0301 \u0416 \u0483 \u2019 \u200D \u2028 \u3099 \u4E2D "
        "\uD55C \u1161 \u11AB \uFE0F \u0600 \U0001F1FA \U0001F3FD \U0001F468 \U0001F3C8 \u2640"_s.split(
            u' ') +
        QStringList{QChar(0xD800), QChar(0xD83C), QChar(0xDFFB)};
    std::mt19937 random(1);
    for (int round = 0; round < 20000; ++round) {
        QString text;
        for (auto left = random() % 8; left > 0; --left) {
            text += pieces.at(static_cast<qsizetype>(random() % static_cast<unsigned>(pieces.size())));
        }
        const auto most = static_cast<qsizetype>(random() % 8);
        EXPECT_EQ(spanOfCharacters(text), knownSpan(text, text.size())) << text.toStdString();
        EXPECT_EQ(spanOfCharacters(text, most), knownSpan(text, most)) << text.toStdString();
    }
}

TEST(CharacterSpan, TakesEachCodePointForWhatItIs) {
    constexpr char32_t end = 0x1FC00; // just past the pictographs
    for (char32_t point = 0; point < end; ++point) {
        const bool isHalf = point >= 0xD800 && point <= 0xDFFF;
        const QString character =
            isHalf ? QString(QChar(static_cast<char16_t>(point))) : QString::fromUcs4(&point, 1);
        const QString text = u"a"_s + character + u"\u0301"_s + character + character + u"z"_s;
        ASSERT_EQ(spanOfCharacters(text), knownSpan(text, text.size()))
            << "U+" << std::hex << static_cast<unsigned>(point);
    }
}

} // namespace ostrelle
