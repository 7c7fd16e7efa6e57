// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/CaptionWriting.h"
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

TEST(CaptionAcceptance, ARealCaptionHas51CharactersThatAPersonSees) {
    const QString family = u"👨‍👩‍👧‍👦"_s;
    EXPECT_FALSE(isRealCaption({}));
    for (const QString& character : {u"x"_s, family, u"e\u0301"_s, u"👍🏽"_s}) {
        EXPECT_FALSE(isRealCaption(u" \t\n\u00A0"_s + character.repeated(50) + u" \n"_s));
        EXPECT_TRUE(isRealCaption(character.repeated(51)));
    }
}

TEST_F(PipelineTest, AReplyBecomesACaptionByTheRulesOfItsPath) {
    settings.setAppendCreditToCaption(true);
    const QString kept = u"Model returned default caption unchanged"_s;
    const QString warned = u"Model returned caption with placeholders unchanged"_s;
    const struct {
        CaptionPath path;
        QString before;
        QString reply;
        std::optional<QString> caption;
        QString line;
    } rows[] = {
        {CaptionPath::singleImage, u"Stub"_s, u"\n One. \nTwo"_s, u"One."_s, {}},
        {CaptionPath::singleImage, u"Stub"_s, u"New in City,State"_s, u"New in City,State"_s, {}},
        {CaptionPath::singleImage, u"Same"_s, u" Same \n"_s, std::nullopt, kept},
        {CaptionPath::singleImage, u"Zoë"_s, u"Zoe\u0308"_s, std::nullopt, kept},
        {CaptionPath::singleImage, u"In city, state"_s, u"In city, state"_s, u"In city, state"_s, warned},
        {CaptionPath::singleImage, u"CITY,STATE"_s, u"CITY,STATE"_s, u"CITY,STATE"_s, warned},
        {CaptionPath::batchReply, u"Same"_s, u"Same"_s, u"Same"_s, {}},
        {CaptionPath::batchReply, u"Stub"_s, u"One.\nTwo "_s, u"One.\nTwo "_s, {}},
        {CaptionPath::oneOfBatch, u"Same"_s, u"Same"_s, u"Same (Desk)"_s, {}},
        {CaptionPath::oneOfBatch, u"Stub"_s, u"One.\nTwo"_s, u"One.\nTwo (Desk)"_s, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reply.toStdString());
        QFile::remove(log.path());
        PreparedImage image{
            .file = u"IMG_1.DNG"_s, .source = {}, .defaultCaption = row.before, .audioTranscription = {}};
        image.source.facts.rights = u"(Desk)"_s;
        EXPECT_EQ(acceptReply(row.path, row.reply, image, settings, log), row.caption);
        EXPECT_EQ(logFile().size(), row.line.isEmpty() ? 0 : 1);
        EXPECT_TRUE(row.line.isEmpty() || hasLogged(row.line));
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
        {true, u"scores."_s, u""_s, u"Abel scores. scores."_s}, // even if the model already added it
    };
    for (const auto& row : rows) {
        settings.setAppendCreditToCaption(row.isWanted);
        settings.setDefaultRightsFallback(row.fallback);
        EXPECT_EQ(finalizeCaption(u"Abel scores."_s, row.rights, settings), row.caption);
    }
}

} // namespace ostrelle
