// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Text.h"

#include <gtest/gtest.h>

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(Text, CutsBetweenCharactersOnly) {
    const QString text = u"a\U0001F44D\U0001F3FDe\u0301z"_s;
    EXPECT_EQ(characterCount(text), 4);
    EXPECT_EQ(firstCharacters(text, 0), QString());
    EXPECT_EQ(firstCharacters(text, 2), u"a\U0001F44D\U0001F3FD"_s);
    EXPECT_EQ(firstCharacters(text, 9), text);
    EXPECT_EQ(lastCharacters(text, 0), QString());
    EXPECT_EQ(lastCharacters(text, 2), u"e\u0301z"_s);
    EXPECT_EQ(lastCharacters(text, 9), text);
}

} // namespace ostrelle
