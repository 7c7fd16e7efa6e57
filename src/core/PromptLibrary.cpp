// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/PromptLibrary.h"

#include "core/PromptLiteral.h"

#include <algorithm>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// The prefix of the names of a style's texts.
QString prefix(CaptionStyle style) {
    switch (style) {
    case CaptionStyle::apSports:
        return u"ap"_s;
    case CaptionStyle::gettySports:
        return u"getty"_s;
    case CaptionStyle::imagnImages:
        return u"imagn"_s;
    case CaptionStyle::simple:
        break;
    }
    return u"simple"_s;
}

QString sportTextName(Sport sport) {
    const QString sportName = rawValue(sport);
    return u"sport"_s + sportName.front().toUpper() + sportName.sliced(1);
}

bool hasBibs(Sport sport) {
    return sport == Sport::trackAndField || sport == Sport::crossCountry;
}

} // namespace

PromptTexts builtInPromptTexts() {
    PromptTexts texts;
    for (const PromptLiteral& literal : promptLiterals()) {
        texts.insert(literal.name.toString(), literal.text.toString());
    }
    return texts;
}

QStringView promptLiteral(QStringView name) {
    const auto literals = promptLiterals();
    const auto found = std::ranges::find(literals, name, &PromptLiteral::name);
    return found == literals.end() ? QStringView() : found->text;
}

PromptLibrary::PromptLibrary(PromptTexts texts) : m_texts(std::move(texts)) {}

QString PromptLibrary::commonHead() const {
    return text(u"commonHead"_s);
}

QString PromptLibrary::commonData() const {
    return text(u"commonData"_s);
}

QString PromptLibrary::sportRules(Sport sport) const {
    return text(sportTextName(sport));
}

QString PromptLibrary::fallbackRules(FallbackBehavior behavior) const {
    return text(behavior == FallbackBehavior::attemptCaption ? u"fallbackAttempt"_s : u"fallbackOmit"_s);
}

QString PromptLibrary::audioRules(bool isPriority) const {
    return text(isPriority ? u"audioPrioritize"_s : u"audioContextOnly"_s);
}

QString PromptLibrary::styleRules(CaptionStyle style, Sport sport, bool includeOffenseDefense) const {
    // The simple style has no room for a bib rule or the line break before it.
    const QString lead = style == CaptionStyle::simple ? QString() : u'\n' + bibRule(style, sport);
    return text(prefix(style) + u"Head"_s) + identifyRule(style, includeOffenseDefense) + lead +
           text(prefix(style) + u"Body"_s) +
           (includeOffenseDefense ? offenseDefenseExample(style) : QString());
}

QString PromptLibrary::bibRule(CaptionStyle style, Sport sport) const {
    return hasBibs(sport) && style != CaptionStyle::simple ? text(prefix(style) + u"BibRule"_s) : QString();
}

QString PromptLibrary::identifyRule(CaptionStyle style, bool includeOffenseDefense) const {
    return text(prefix(style) + (includeOffenseDefense ? u"IdentifyOffenseDefense"_s : u"Identify"_s));
}

QString PromptLibrary::offenseDefenseExample(CaptionStyle style) const {
    return text(prefix(style) + u"ExampleOffenseDefense"_s);
}

QString PromptLibrary::rosterHead() const {
    return text(u"codeReplacementsHead"_s);
}

QString PromptLibrary::rosterTruncationNote() const {
    return text(u"codeReplacementsTruncationNote"_s);
}

QString PromptLibrary::rosterOffenseDefense(Prompt prompt) const {
    return text(prompt == Prompt::batch ? u"codeReplacementsOffenseDefenseBatch"_s
                                        : u"codeReplacementsOffenseDefense"_s);
}

} // namespace ostrelle
