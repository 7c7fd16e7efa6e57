// SPDX-License-Identifier: GPL-3.0-or-later
#include "promptserver/TemplateMaker.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Without line breaks at either end: the client joins the templates with blank lines.
QString trimmedLineBreaks(const QString& text) {
    qsizetype first = 0;
    qsizetype end = text.size();
    while (first < end && text.at(first) == u'\n') {
        ++first;
    }
    while (end > first && text.at(end - 1) == u'\n') {
        --end;
    }
    return text.sliced(first, end - first);
}

QString styleRules(const PromptQuery& query, const PromptLibrary& library) {
    const QString rules = library.styleRules(query.style, query.sport, query.includeOffenseDefense);
    const QString example = library.offenseDefenseExample(query.style);
    // For football only, the prompt of one image adds the example from its own template.
    const bool hasExampleTwice =
        query.includeOffenseDefense && query.sport == Sport::football && rules.endsWith(example);
    return hasExampleTwice ? rules.chopped(example.size()) : rules;
}

} // namespace

QJsonObject makeTemplates(const PromptQuery& query, const PromptLibrary& library) {
    const QString commonRules =
        trimmedLineBreaks(library.commonHead()) + u"\n\n"_s + trimmedLineBreaks(library.commonData());
    const QString example = library.offenseDefenseExample(query.style);
    return {{u"commonRules"_s, commonRules},
            {u"sportInstructions"_s, trimmedLineBreaks(library.sportRules(query.sport))},
            {u"styleRules"_s, trimmedLineBreaks(styleRules(query, library))},
            {u"fallbackInstructions"_s, trimmedLineBreaks(library.fallbackRules(query.fallback))},
            {u"audioInstructions"_s, trimmedLineBreaks(library.audioRules(query.prioritizeAudioFiles))},
            {u"offenseDefenseInstructions"_s, trimmedLineBreaks(example)}};
}

PromptTexts builtInTemplateTexts() {
    PromptTexts texts = builtInPromptTexts();
    texts.removeIf([](const auto& text) { return text.key().startsWith(u"codeReplacements"); });
    return texts;
}

} // namespace ostrelle
