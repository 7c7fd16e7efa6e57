// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/PromptBuilder.h"

#include <gtest/gtest.h>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QTimeZone utc = QTimeZone::utc();

/// The prompt for a list of text names, with "|" for a line break.
QString spelledOut(const QString& recipe) {
    QString text;
    for (const QString& word : recipe.split(u' ', Qt::SkipEmptyParts)) {
        const QStringView literal = promptLiteral(word);
        EXPECT_TRUE(word == u"|" || !literal.isEmpty()) << word.toStdString();
        text += word == u"|" ? QStringView(u"\n") : literal;
    }
    return text;
}

PromptTemplates namedTemplates() {
    return {.commonRules = u"COMMON"_s,
            .sportInstructions = u"SPORT"_s,
            .styleRules = u"STYLE"_s,
            .fallbackInstructions = u"FALLBACK"_s,
            .audioInstructions = u"AUDIO"_s,
            .offenseDefenseInstructions = u"OFFENSE"_s};
}

} // namespace

TEST(PromptBuilder, JoinsThePromptOfABatchFromTheBuiltInTexts) {
    const struct {
        CaptionStyle style;
        Sport sport;
        bool includeOffenseDefense;
        QString sportRules;
        QString styleRules;
    } rows[] = {
        {CaptionStyle::apSports, Sport::crossCountry, false, u"sportCrossCountry"_s,
         u"apHead apIdentify | apBibRule apBody"_s},
        {CaptionStyle::gettySports, Sport::football, true, u"sportFootball"_s,
         u"gettyHead gettyIdentifyOffenseDefense | gettyBody gettyExampleOffenseDefense"_s},
        {CaptionStyle::imagnImages, Sport::trackAndField, true, u"sportTrackAndField"_s,
         u"imagnHead imagnIdentifyOffenseDefense | imagnBibRule imagnBody imagnExampleOffenseDefense"_s},
        {CaptionStyle::simple, Sport::horseRacing, true, u"sportHorseRacing"_s,
         u"simpleHead simpleIdentifyOffenseDefense simpleBody simpleExampleOffenseDefense"_s},
    };
    for (const auto& row : rows) {
        const PromptQuery query{.style = row.style,
                                .sport = row.sport,
                                .fallback = FallbackBehavior::omitCaption,
                                .includeOffenseDefense = row.includeOffenseDefense};
        EXPECT_EQ(buildBatchPrompt(query, {}),
                  spelledOut(u"commonHead %1 | | | fallbackOmit commonData | %2"_s.arg(row.sportRules,
                                                                                       row.styleRules)));
    }
}

TEST(PromptBuilder, ABatchHasTheRulesOfItsSwitchesAndRoster) {
    const struct {
        FallbackBehavior fallback;
        bool prioritizeAudioFiles;
        QString audioNote;
        QString middle;
    } rows[] = {
        {FallbackBehavior::attemptCaption, false, u""_s, u"| | | fallbackAttempt"_s},
        {FallbackBehavior::attemptCaption, true, u""_s, u"| | | fallbackAttempt"_s},
        {FallbackBehavior::omitCaption, false, u"Note"_s, u"| | audioContextOnly | fallbackOmit"_s},
        {FallbackBehavior::omitCaption, true, u"Note"_s, u"| | audioPrioritize | fallbackOmit"_s},
    };
    const CodeReplacements roster = parseCodeReplacements("12\tSam Abel");
    for (const auto& row : rows) {
        const PromptQuery query{.style = CaptionStyle::simple,
                                .sport = Sport::soccer,
                                .fallback = row.fallback,
                                .prioritizeAudioFiles = row.prioritizeAudioFiles};
        EXPECT_EQ(buildBatchPrompt(query, roster, row.audioNote),
                  spelledOut(u"codeReplacementsHead"_s) + u"\nCode Replacements:\n12\tSam Abel\n"_s +
                      spelledOut(u"commonHead sportSoccer %1 commonData | "
                                 "simpleHead simpleIdentify simpleBody"_s.arg(row.middle)));
    }
    EXPECT_EQ(codeReplacementsBlock(roster, PromptLibrary::Prompt::batch, true),
              spelledOut(u"codeReplacementsHead codeReplacementsOffenseDefenseBatch"_s) +
                  u"\nCode Replacements:\n12\tSam Abel\n"_s);
}

TEST(PromptBuilder, JoinsThePromptOfOneImageFromItsTemplates) {
    const QString context = u"Context:\n- Sport: %1\n"_s;
    const QString noted = u"Context:\n- Sport: %1\n- Audio Note: A catch\n"_s;
    const QString end = u"\n\nExisting caption (may be minimal): No caption"_s;
    const struct {
        Sport sport;
        bool includeOffenseDefense;
        std::optional<QString> audioNote;
        QString prompt;
    } rows[] = {
        {Sport::football, false, std::nullopt,
         context.arg(u"Football"_s) + u"COMMON\n\nSPORT\n\nFALLBACK\n\nSTYLE"_s + end},
        {Sport::football, true, QString(),
         context.arg(u"Football"_s) + u"COMMON\n\nSPORT\n\nFALLBACK\n\nSTYLE\n\nOFFENSE"_s + end},
        {Sport::basketball, true, u"A catch"_s,
         noted.arg(u"Basketball"_s) + u"COMMON\n\nSPORT\n\nAUDIO\n\nFALLBACK\n\nSTYLE"_s + end},
    };
    for (const auto& row : rows) {
        CaptionFacts facts;
        facts.sport = row.sport;
        facts.defaultCaption = u"No caption"_s;
        facts.audioNote = row.audioNote;
        const PromptQuery query{.sport = row.sport, .includeOffenseDefense = row.includeOffenseDefense};
        EXPECT_EQ(buildPrompt(facts, query, namedTemplates(), {}, utc), row.prompt);
        EXPECT_EQ(buildBatchContext(facts, utc), contextBlock(facts, utc) + end.sliced(1));
    }
    EXPECT_EQ(buildPrompt({}, {}, {}, {}, utc),
              u"Context:\n- Sport: Football\n\n\n\n\n\n\n\n\nExisting caption (may be minimal): "_s)
        << "empty templates are joined like any others";
}

TEST(PromptBuilder, TheRosterOfOneImageStandsBetweenItsFactsAndTheRules) {
    const CodeReplacements roster = parseCodeReplacements("12\tSam Abel\n");
    const PromptQuery query{.sport = Sport::basketball, .includeOffenseDefense = true};
    const QString prompt = buildPrompt({}, query, namedTemplates(), roster, utc);
    EXPECT_TRUE(prompt.startsWith(u"Context:\n- Sport: Football\n"_s +
                                  spelledOut(u"codeReplacementsHead codeReplacementsOffenseDefense"_s) +
                                  u"\nCode Replacements:\n12\tSam Abel\n\nCOMMON\n\nSPORT"_s))
        << prompt.toStdString();
}

} // namespace ostrelle
