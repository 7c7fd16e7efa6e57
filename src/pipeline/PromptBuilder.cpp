// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/PromptBuilder.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

QString buildPrompt(const CaptionFacts& facts, const PromptQuery& query, const PromptTemplates& templates,
                    const CodeReplacements& replacements, const QTimeZone& zone) {
    QStringList sections = {contextBlock(facts, zone) +
                                codeReplacementsBlock(replacements, PromptLibrary::Prompt::singleImage,
                                                      query.includeOffenseDefense) +
                                templates.commonRules,
                            templates.sportInstructions};
    if (facts.audioNote && !facts.audioNote->isEmpty()) {
        sections.append(templates.audioInstructions);
    }
    sections.append(templates.fallbackInstructions);
    sections.append(templates.styleRules);
    if (query.includeOffenseDefense && query.sport == Sport::football) {
        sections.append(templates.offenseDefenseInstructions);
    }
    sections.append(existingCaptionLine(facts));
    return sections.join(u"\n\n"_s);
}

QString buildBatchPrompt(const PromptQuery& query, const CodeReplacements& replacements,
                         const QString& audioNote) {
    const PromptLibrary library;
    const QString audioText =
        audioNote.isEmpty() ? QString() : library.audioRules(query.prioritizeAudioFiles);
    return codeReplacementsBlock(replacements, PromptLibrary::Prompt::batch, query.includeOffenseDefense) +
           library.commonHead() + library.sportRules(query.sport) + u"\n\n"_s + audioText + u'\n' +
           library.fallbackRules(query.fallback) + library.commonData() + u'\n' +
           library.styleRules(query.style, query.sport, query.includeOffenseDefense);
}

} // namespace ostrelle
