// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ReadinessRules.h"

#include "pipeline/PipelineFixture.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr SourceType local = SourceType::local;
constexpr SourceType ftp = SourceType::ftp;

QString configurationText(const Readiness& readiness) {
    return configurationAlert(missingConfiguration(readiness)).text;
}

} // namespace

TEST_F(PipelineTest, EachSourceNeedsItsOwnFolderAndRoster) {
    const bool inFolder = true;
    defaults.remove(apiKeyName);
    settings.setCodeReplacementsFile(std::nullopt);
    EXPECT_EQ(missingConfiguration(Readiness::of(defaults, settings, inFolder)),
              (QStringList{u"OpenAI API Key"_s, u"Watch Folder"_s, u"Code Replacements File"_s}));
    defaults.set(apiKeyName, u"key"_s);
    settings.setIngestFolder(u"/g"_s);
    EXPECT_TRUE(canProcess(Readiness::of(defaults, settings, inFolder)));
    EXPECT_FALSE(canProcess(Readiness::of(defaults, settings, false)));
    settings.setSourceType(ftp);
    EXPECT_EQ(missingConfiguration(Readiness::of(defaults, settings, inFolder)),
              (QStringList{u"Destination Folder"_s, u"Code Replacements File"_s}));
    settings.setDestinationFolder(u"/d"_s);
    EXPECT_EQ(missingConfiguration(Readiness::of(defaults, settings, inFolder)),
              QStringList{u"Code Replacements File"_s});
    settings.setCodeReplacementsFile(u"/roster.txt"_s);
    EXPECT_TRUE(canProcess(Readiness::of(defaults, settings, false)));
    settings.setSourceType(local);
    EXPECT_TRUE(canProcess(Readiness::of(defaults, settings, false)));
    settings.setIngestFolder(std::nullopt);
    EXPECT_EQ(missingConfiguration(Readiness::of(defaults, settings, false)), QStringList{u"Watch Folder"_s});
    defaults.set(apiKeyName, QString());
    EXPECT_FALSE(Readiness::of(defaults, settings, false).hasKey);
}

TEST(ReadinessRules, WhatIsMissingIsAskedFor) {
    const struct {
        Readiness readiness;
        const char16_t* text;
    } rows[] = {
        {{local, false, true, true},
         u"Please add your OpenAI API key in Settings before processing. You need "
         "your own API key to use Ostrelle Captions."},
        {{local, true, false, true},
         u"Please select a Watch Folder before processing. You can also place a "
         "'code-replacements.txt' file in the watch folder."},
        {{ftp, true, false, true}, u"Please select a Destination Folder before processing."},
        {{ftp, true, true, false}, u"Please select a Code Replacements File before processing."},
        {{local, false, false, false},
         u"Please configure the following before processing:\n• OpenAI API Key\n• Watch Folder\n• Code "
         "Replacements File"},
        {{ftp, true, false, false},
         u"Please configure the following before processing:\n• Destination Folder\n• Code Replacements "
         u"File"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(configurationText(row.readiness), row.text);
    }
    const Alert alert = configurationAlert({u"Camera"_s});
    EXPECT_EQ(alert.title, u"Configuration Required");
    EXPECT_EQ(alert.text, u"Please configure Camera before processing.");
    EXPECT_EQ(alert.style, Alert::Style::warning);
}

TEST_F(PipelineTest, AutoModeIsOnlyTurnedOnWhenAllIsThere) {
    const struct {
        Readiness readiness;
        const char16_t* words;
    } rows[] = {
        {{local, false, false, false},
         u"OpenAI API Key Required: Please add your OpenAI API key in Settings before enabling "
         "auto-processing. You need your own API key to use Ostrelle Captions."},
        {{local, true, false, false},
         u"Configuration Required: Please set both the Watch Folder and Code Replacements File before "
         "enabling auto-processing. You can also place a 'code-replacements.txt' file in the watch folder."},
        {{ftp, true, false, false},
         u"Configuration Required: Please set both the Destination Folder and Code Replacements File before "
         "enabling auto-processing."},
        {{local, true, false, true},
         u"Watch Folder Required: Please select a Watch Folder before enabling auto-processing."},
        {{ftp, true, false, true},
         u"Destination Folder Required: Please select a Destination Folder before enabling auto-processing."},
        {{ftp, true, true, false},
         u"Code Replacements File Required: Please select a Code Replacements File before enabling "
         "auto-processing."},
    };
    for (const auto& row : rows) {
        const std::optional<Alert> refusal = switchAutoMode(settings, row.readiness, true);
        ASSERT_TRUE(refusal);
        EXPECT_EQ(refusal->title + u": "_s + refusal->text, row.words);
        EXPECT_EQ(refusal->buttons, QStringList{u"OK"_s});
        EXPECT_FALSE(settings.autoMode());
    }
    EXPECT_FALSE(switchAutoMode(settings, {local, true, true, true}, true));
    EXPECT_TRUE(settings.autoMode());
    EXPECT_FALSE(switchAutoMode(settings, {local, false, false, false}, false));
    EXPECT_FALSE(settings.autoMode());
}

TEST(CaptionAllQuestionTest, TellsHowManyThereAreAndWhatIsLost) {
    const struct {
        CaptionCount count;
        bool isOverwriting;
        QString words;
        QStringList furtherButtons;
    } rows[] = {
        {{60, 4, 3},
         true,
         u"60 images; 4 have captions that will be replaced."_s,
         {u"Only the 56 Without"_s}},
        {{60, 4, 3}, false, u"60 images; 3 have captions that will be left alone."_s, {}},
        {{2, 2, 0}, true, u"2 images; 2 have captions that will be replaced."_s, {}},
        {{2, 1, 0}, true, u"2 images; 1 has a caption that will be replaced."_s, {u"Only the 1 Without"_s}},
        {{1, 0, 0}, true, u"1 image; none has a caption yet."_s, {}},
    };
    for (const auto& row : rows) {
        const Alert alert = captionAllQuestion(row.count, row.isOverwriting);
        EXPECT_EQ(alert.text, captionAllQuestion().text + u"\n\n"_s + row.words);
        EXPECT_EQ(alert.buttons.mid(2), row.furtherButtons);
    }
}

} // namespace ostrelle
