// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/PromptComposition.h"

#include "pipeline/PromptBuilder.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

PromptQuery promptQuery(const SettingsStore& settings) {
    PromptQuery query;
    query.style = settings.captionStyle();
    query.sport = settings.sport();
    query.fallback = settings.fallbackBehavior();
    query.includeOffenseDefense = settings.includeOffenseDefense();
    query.prioritizeAudioFiles = settings.prioritizeAudioFiles();
    return query;
}

CaptionFacts captionFacts(const PreparedImage& image, const SettingsStore& settings) {
    CaptionFacts facts;
    facts.context = image.context();
    facts.rights = image.rights();
    facts.defaultRightsFallback = settings.defaultRightsFallback();
    facts.captionStyle = settings.captionStyle();
    facts.sport = settings.sport();
    facts.useTeamIdentification = settings.useTeamIdentification();
    facts.team1 = {settings.team1Name(), settings.team1Color()};
    facts.team2 = {settings.team2Name(), settings.team2Color()};
    facts.audioNote = image.audioTranscription;
    facts.defaultCaption = image.defaultCaption;
    return facts;
}

QCoro::Task<QString> composeImagePrompt(AnalyzerParts parts, PreparedImage image, CodeReplacements roster) {
    // The settings of one moment: who changes the sport meanwhile gets the rules and the facts of the old
    // one.
    const PromptQuery query = promptQuery(parts.settings);
    const CaptionFacts facts = captionFacts(image, parts.settings);
    const PromptTemplates templates = co_await parts.prompts.fetchPrompts(query);
    AnalyzerLog& log = parts.log;
    log.appendToLog(facts.context.event
                        ? u"[Analyzer] ✓ Event found in context: '%1'"_s.arg(*facts.context.event)
                        : u"[Analyzer] ✗ WARNING: No event found in context"_s);
    if (roster.isTruncated()) {
        log.print(truncationWarning(roster));
        log.appendToLog(truncationLogLine(roster));
    }
    co_return buildPrompt(facts, query, templates, roster, parts.clock.timeZone());
}

QCoro::Task<CaptionReply> askForCaption(AnalyzerParts parts, QByteArray jpeg, QString prompt) {
    constexpr int maximumTokens = 180;
    const CaptionReply reply =
        co_await parts.openAI.generateCaption(jpeg, prompt, captionModel, maximumTokens, captionTemperature);
    if (reply.usage) {
        parts.usage.recordUsage(reply.usage->promptTokens, reply.usage->completionTokens);
    }
    co_return reply;
}

} // namespace ostrelle
