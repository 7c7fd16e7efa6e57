// SPDX-License-Identifier: GPL-3.0-or-later
#include "checks/CaptionCheck.h"

#include <gtest/gtest.h>

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(RosterNames, ALineOfTheDesksOwnWordsGivesANameAndANumber) {
    const struct {
        const char16_t* code;
        const char16_t* line;
        const char16_t* name;
        const char16_t* number;
    } rows[] = {
        {u"12", u"Kentucky guard Dana Krupin", u"Dana Krupin", u"12"},
        {u"k12", u"Dana Krupin (12)", u"Dana Krupin", u"12"},
        {u"dk", u"Dana Krupin #12 of the Kentucky Wildcats", u"Dana Krupin", u"12"},
        {u"44", u"John Smith (RB)", u"John Smith", u"44"},
        {u"h7", u"O'Brien-Smith, Katie", u"Katie O'Brien-Smith", u"7"},
        {u"07", u"Luis van der Berg", u"Luis van der Berg", u"7"},
        {u"00", u"Marvin Hale, Jr.", u"Marvin Hale Jr.", u"00"},
        {u"9", u"Kentucky Wildcats' Ana Núñez", u"Ana Núñez", u"9"},
        {u"3", u"DANA KRUPIN", u"DANA KRUPIN", u"3"},
        {u"5", u"quarterback J.D. Hale\tHale\tKentucky", u"J.D. Hale", u"5"},
        {u"coach", u"head coach Wren Doyle", u"Wren Doyle", u""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(QString::fromUtf16(row.line).toStdString());
        const RosterNames roster(
            {{.code = QString::fromUtf16(row.code), .name = QString::fromUtf16(row.line)}});
        ASSERT_EQ(roster.players().size(), 1);
        EXPECT_EQ(roster.players().first().name, QString::fromUtf16(row.name));
        EXPECT_EQ(roster.players().first().numbers.join(u' '), QString::fromUtf16(row.number));
    }
}

TEST(CaptionCheck, AFindingTellsWhereItIsAndWhatTheRosterHas) {
    const RosterNames roster(
        {{u"12"_s, u"Kentucky guard Dana Krupin"_s}, {u"25"_s, u"Alabama forward Marcus Teel"_s}});
    const QString caption = u"Dana Krupin (21) passes over Marcus Teal (25)."_s;
    const QList<Finding> findings = checkCaption({.caption = caption}, roster);
    ASSERT_EQ(findings.size(), 3);
    const auto words = [&](qsizetype index) {
        return caption.mid(findings.at(index).from, findings.at(index).to - findings.at(index).from);
    };
    EXPECT_EQ(findings.at(0).text, u"The roster has Dana Krupin under 12."_s);
    EXPECT_EQ(words(0), u"21"_s);
    EXPECT_EQ(findings.at(1).text, u"“Marcus Teal” is not in the roster. It has Marcus Teel."_s);
    EXPECT_EQ(words(1), u"Marcus Teal"_s);
    EXPECT_EQ(findings.at(2).text, u"The roster has Marcus Teel under 25."_s);
    EXPECT_EQ(words(2), u"25"_s);
    EXPECT_EQ(checkCaption({.caption = caption}, RosterNames({})), QList<Finding>());
}

TEST(CaptionCheck, OnlyPicturesWithTheSameNamesAndNumbersAreRepeated) {
    const QString drive = u"Kentucky guard Dana Krupin (12) drives past Marcus Teel (25) on Saturday."_s;
    const struct {
        const char* name;
        QString other;
        bool isRepeated;
    } rows[] = {
        {"same", drive, true},
        {"in capitals", drive.toUpper(), true},
        {"another word", QString(drive).replace(u"drives"_s, u"runs"_s), true},
        {"another name", QString(drive).replace(u"Dana"_s, u"Mia"_s), false},
        {"another number", QString(drive).replace(u"25"_s, u"24"_s), false},
        {"none", QString(), false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto findings = repeatedCaptions({u"Fans cheer."_s, drive, row.other, QString()});
        EXPECT_EQ(findings.at(1).has_value(), row.isRepeated);
        EXPECT_EQ(findings.at(2).has_value(), row.isRepeated);
        EXPECT_FALSE(findings.at(0) || findings.at(3));
    }
}

} // namespace ostrelle
