// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/CharacterSpan.h"

#include "core/Text.h"

#include <gtest/gtest.h>

#include <QStringList>
#include <random>

namespace ostrelle {

using namespace Qt::StringLiterals;

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
    };
    for (const auto& row : rows) {
        EXPECT_EQ(spanOfCharacters(row.text, row.most), row.span) << row.text.toStdString();
    }
}

TEST(CharacterSpan, AgreesWithTheWholeAlgorithmOnAnyMixture) {
    const QStringList pieces = {
        u"a"_s,          u"7"_s,
        u"\t"_s,         u"\n"_s,
        u"\r"_s,         u"\r\n"_s,
        u"\u00AD"_s,     u"\u00A9"_s,
        u"\u02FF"_s,     u"\u0301"_s,
        u"\u0416"_s,     u"\u0483"_s,
        u"\u2019"_s,     u"\u200D"_s,
        u"\u2028"_s,     u"\u3099"_s,
        u"\u4E2D"_s,     u"\uD55C"_s,
        u"\u1161"_s,     u"\u11AB"_s,
        u"\uFE0F"_s,     u"\u0600"_s,
        u"\U0001F1FA"_s, u"\U0001F3FD"_s,
        u"\U0001F468"_s, QString(QChar(0xD800)),
    };
    std::mt19937 random(1);
    for (int round = 0; round < 20000; ++round) {
        QString text;
        for (auto left = random() % 8; left > 0; --left) {
            text += pieces.at(static_cast<qsizetype>(random() % static_cast<unsigned>(pieces.size())));
        }
        const auto most = static_cast<qsizetype>(random() % 8);
        EXPECT_EQ(spanOfCharacters(text).characters, characterCount(text)) << text.toStdString();
        EXPECT_EQ(text.first(spanOfCharacters(text, most).codeUnits), firstCharacters(text, most));
    }
}

} // namespace ostrelle
