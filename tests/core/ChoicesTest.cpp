// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/CaptionStyle.h"
#include "core/Sport.h"
#include "core/TeamColor.h"

#include <gtest/gtest.h>

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(Choices, AStoredTextIsACaseOnlyToTheLetter) {
    EXPECT_EQ(fromRawValue<Sport>(u"trackAndField"), Sport::trackAndField);
    EXPECT_EQ(label(Sport::trackAndField), u"Track & Field"_s);
    EXPECT_EQ(rawValue(CaptionStyle::imagnImages), u"imagnImages"_s);
    for (const QString& text : {u""_s, u"TrackAndField"_s, u"trackAndField "_s, u"Track & Field"_s}) {
        EXPECT_FALSE(fromRawValue<Sport>(text)) << text.toStdString();
    }
}

TEST(Choices, ThePickersOfferAllButHorseRacingAndTheIconsThatThereAre) {
    EXPECT_EQ(selectableSports().size(), 9);
    EXPECT_FALSE(selectableSports().contains(Sport::horseRacing));
    EXPECT_EQ(iconName(Sport::softball, [](const QString& name) { return name == u"baseball.fill"; }),
              u"baseball.fill"_s);
    EXPECT_EQ(iconName(Sport::soccer, [](const QString&) { return false; }), u"sportscourt"_s);
    EXPECT_EQ(teamColors().size(), 13U);
    EXPECT_EQ(swatchColor(u"Navy"), (std::array{0.0, 0.0, 0.5}));
    EXPECT_EQ(swatchColor(u"Mauve"), swatchColor(u"Blue"));
}

} // namespace ostrelle
