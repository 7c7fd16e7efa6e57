// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/CaptionAcceptance.h"

#include "pipeline/PipelineFixture.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(CaptionAcceptance, ACaptionIsTheFirstLineThatSaysSomething) {
    const struct {
        QString text;
        QString line;
    } rows[] = {
        {u"One"_s, u"One"_s},          {u"\n \t\n  One  \nTwo"_s, u"One"_s},
        {u"One\rTwo"_s, u"One"_s},     {u"One\r\nTwo"_s, u"One"_s},
        {u"One\u2028Two"_s, u"One"_s}, {u"One\u0085Two"_s, u"One"_s},
        {u"\n \n"_s, u""_s},           {u""_s, u""_s},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(firstNonEmptyLine(row.text), row.line) << row.text.toStdString();
    }
}

TEST_F(PipelineTest, ACreditIsAppendedWhereTheUserWantsOne) {
    const struct {
        bool isWanted;
        std::optional<QString> rights;
        QString fallback;
        QString caption;
    } rows[] = {
        {false, u"(A. Photographer)"_s, u"(Agency)"_s, u"Abel scores."_s},
        {true, u"(A. Photographer)"_s, u"(Agency)"_s, u"Abel scores. (A. Photographer)"_s},
        {true, std::nullopt, u"(Agency)"_s, u"Abel scores. (Agency)"_s},
        {true, u""_s, u"(Agency)"_s, u"Abel scores. (Agency)"_s},
        {true, std::nullopt, u""_s, u"Abel scores."_s},
        {true, u"scores."_s, u""_s, u"Abel scores. scores."_s}, // also when the model did so already
    };
    for (const auto& row : rows) {
        settings.setAppendCreditToCaption(row.isWanted);
        settings.setDefaultRightsFallback(row.fallback);
        EXPECT_EQ(finalizeCaption(u"Abel scores."_s, row.rights, settings), row.caption);
    }
}

} // namespace ostrelle
