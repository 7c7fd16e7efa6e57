// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ContextBlock.h"

#include <gtest/gtest.h>

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(ContextBlock, HasALineForEachFactInItsOrder) {
    CaptionFacts facts;
    facts.context = {.city = u"Norwick"_s,
                     .state = std::nullopt,
                     .country = u"USA"_s,
                     .location = u"Heron Stadium"_s,
                     .dateISO8601 = u"2025-10-25T19:30:00-04:00"_s,
                     .event = u"Herons vs. Foxes"_s,
                     .keywords = {u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"5"_s, u"6"_s, u"7"_s, u"8"_s, u"9"_s,
                                  u"10"_s, u"11"_s, u"12"_s}};
    facts.rights = u"(A. Photographer)"_s;
    facts.defaultRightsFallback = u"not used"_s;
    facts.sport = Sport::trackAndField;
    facts.useTeamIdentification = true;
    facts.team1 = {u"Herons"_s, u"Navy"_s};
    facts.team2 = {u"Foxes"_s, QString()};
    facts.audioNote = u"Number 7, a catch"_s;
    EXPECT_EQ(
        contextBlock(facts, QTimeZone("America/New_York")),
        u"Context:\n- Event: Herons vs. Foxes\n- Venue: Heron Stadium\n- Place: Norwick, USA\n"
        "- Date: 2025-10-25T19:30:00-04:00\n- Rights: (A. Photographer)\n- Sport: Track & Field\n"
        "- Teams: Herons (wearing navy jerseys) vs. Foxes (wearing  jerseys)\n"
        "- Audio Note: Number 7, a catch\n- DateText: Saturday, Oct. 25, 2025\n- Keywords: 1, 2, 3, 4, 5, 6, 7, 8, 9, 10\n"_s);
    EXPECT_EQ(contextBlock({}, QTimeZone::utc()), u"Context:\n- Sport: Football\n"_s);
}

TEST(ContextBlock, RightsAndTeamsHaveTheirConditions) {
    CaptionFacts facts;
    facts.defaultRightsFallback = u" (Desk) "_s;
    facts.team2 = {u"Auburn"_s, u"Blue"_s};
    EXPECT_EQ(contextBlock(facts, QTimeZone::utc()), u"Context:\n- Rights:  (Desk) \n- Sport: Football\n"_s);
    facts.defaultRightsFallback = u"  "_s;
    facts.useTeamIdentification = true;
    EXPECT_EQ(contextBlock(facts, QTimeZone::utc()),
              u"Context:\n- Sport: Football\n- Teams: Auburn (wearing blue jerseys)\n"_s);
    facts.team2 = {};
    EXPECT_EQ(contextBlock(facts, QTimeZone::utc()), u"Context:\n- Sport: Football\n"_s);
}

TEST(ContextBlock, TheDateIsTheDayOfTheMachineInTheFormOfTheStyle) {
    const struct {
        QString date;
        CaptionStyle style;
        QByteArray zone;
        std::optional<QString> text;
    } rows[] = {
        {u"2025-10-25T19:30:00-04:00"_s, CaptionStyle::apSports, "America/New_York",
         u"Saturday, Oct. 25, 2025"_s},
        {u"2025-10-25T19:30:00-04:00"_s, CaptionStyle::apSports, "Asia/Tokyo", u"Sunday, Oct. 26, 2025"_s},
        {u"2025-09-01T12:00:00Z"_s, CaptionStyle::apSports, "UTC", u"Monday, Sept. 1, 2025"_s},
        {u"2025-09-01T12:00:00Z"_s, CaptionStyle::gettySports, "UTC", u"September 1, 2025"_s},
        {u"2025-09-01T12:00:00Z"_s, CaptionStyle::imagnImages, "UTC", u"Sept 1, 2025"_s},
        {u"2025-03-09T12:00:00Z"_s, CaptionStyle::imagnImages, "UTC", u"March 9, 2025"_s},
        {u"2025-09-01T12:00:00Z"_s, CaptionStyle::simple, "UTC", std::nullopt},
        {u"2025-09-01"_s, CaptionStyle::apSports, "UTC", std::nullopt},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(dateText(row.date, row.style, QTimeZone(row.zone)), row.text) << row.date.toStdString();
    }
}

} // namespace ostrelle
