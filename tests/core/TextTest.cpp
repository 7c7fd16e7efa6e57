// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Text.h"

#include <gtest/gtest.h>

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(Text, CountsWhatAPersonSeesAsOneCharacter) {
    const struct {
        QString text;
        qsizetype count;
    } rows[] = {
        {u""_s, 0},
        {u"abc"_s, 3},
        {u"e\u0301"_s, 1},                                    // a decomposed é
        {u"\U0001F3C8"_s, 1},                                 // a football
        {u"\U0001F44D\U0001F3FD"_s, 1},                       // thumbs up with a skin tone
        {u"\U0001F468\u200D\U0001F469\u200D\U0001F467"_s, 1}, // a family of three
        {u"\U0001F1FA\U0001F1F8\U0001F1E9\U0001F1EA"_s, 2},   // two flags
        {u"\r\n"_s, 1},
        {u"\uD55C\uAD6D"_s, 2},       // Hangul syllables
        {u"\u1112\u1161\u11AB"_s, 1}, // one, in its parts
    };
    for (const auto& row : rows) {
        EXPECT_EQ(characterCount(row.text), row.count) << row.text.toStdString();
    }
}

TEST(Text, CutsBetweenCharactersOnly) {
    const QString text = u"a\U0001F44D\U0001F3FDe\u0301z"_s;
    EXPECT_EQ(firstCharacters(text, 0), QString());
    EXPECT_EQ(firstCharacters(text, 2), u"a\U0001F44D\U0001F3FD"_s);
    EXPECT_EQ(firstCharacters(text, 9), text);
    EXPECT_EQ(lastCharacters(text, 0), QString());
    EXPECT_EQ(lastCharacters(text, 2), u"e\u0301z"_s);
    EXPECT_EQ(lastCharacters(text, 9), text);
}

} // namespace ostrelle
