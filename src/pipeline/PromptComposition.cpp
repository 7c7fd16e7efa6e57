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

QCoro::Task<QString> composeImagePrompt(const SettingsStore& settings, PromptService& prompts,
                                        AnalyzerLog& log, QTimeZone zone, PreparedImage image,
                                        CodeReplacements roster) {
    // Read both settings before waiting, so that rules and facts are for the same sport even if the user
    // changes it meanwhile.
    const PromptQuery query = promptQuery(settings);
    const CaptionFacts facts = captionFacts(image, settings);
    const PromptTemplates templates = co_await prompts.fetchPrompts(query);
    log.appendToLog(facts.context.event
                        ? u"[Analyzer] ✓ Event found in context: '%1'"_s.arg(*facts.context.event)
                        : u"[Analyzer] ✗ WARNING: No event found in context"_s);
    if (roster.isTruncated()) {
        log.print(truncationWarning(roster));
        log.appendToLog(truncationLogLine(roster));
    }
    co_return buildPrompt(facts, query, templates, roster, zone);
}

QCoro::Task<CaptionReply> askForCaption(OpenAIClient& openAI, UsageTracker& usage, QByteArray jpeg,
                                        QString prompt) {
    constexpr int maximumTokens = 180;
    const CaptionReply reply =
        co_await openAI.generateCaption(jpeg, prompt, captionModel, maximumTokens, captionTemperature);
    if (reply.usage) {
        usage.recordUsage(reply.usage->promptTokens, reply.usage->completionTokens);
    }
    co_return reply;
}

} // namespace ostrelle
