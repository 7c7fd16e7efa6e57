// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/CaptionStyle.h"
#include "core/FallbackBehavior.h"
#include "core/Sport.h"

#include <QMap>
#include <QString>
#include <QStringView>

namespace ostrelle {

/// The texts of the prompt library by name, such as "apHead". Line breaks at either end belong to the text.
using PromptTexts = QMap<QString, QString>;

/// The built-in texts: the files of resources/prompts, named without ".txt".
PromptTexts builtInPromptTexts();

/// The built-in text of this name, or nothing. No copy is made; it lasts as long as the program.
QStringView promptLiteral(QStringView name);

/// What a set of texts says to the model about a sport, a style or a setting. A missing text is empty.
class PromptLibrary {
public:
    /// Which prompt a mandatory roster rule is for: each has its own layout for it.
    enum class Prompt { singleImage, batch };

    PromptLibrary() : PromptLibrary(builtInPromptTexts()) {}
    explicit PromptLibrary(PromptTexts texts);

    QString commonHead() const;
    QString commonData() const;
    QString sportRules(Sport sport) const;
    QString fallbackRules(FallbackBehavior behavior) const;
    /// How much weight the photographer's audio note carries.
    QString audioRules(bool isPriority) const;

    /// The whole of a style: its head, how to identify players, when to name a number (for sports with bibs),
    /// its body and, with offense and defense, an example of players who share a number.
    QString styleRules(CaptionStyle style, Sport sport, bool includeOffenseDefense) const;
    /// The last line of styleRules() when offense and defense are told apart.
    QString offenseDefenseExample(CaptionStyle style) const;

    QString rosterHead() const;
    QString rosterTruncationNote() const;
    /// The rule to name all players who share a number.
    QString rosterOffenseDefense(Prompt prompt) const;

private:
    QString bibRule(CaptionStyle style, Sport sport) const;
    QString identifyRule(CaptionStyle style, bool includeOffenseDefense) const;
    QString text(const QString& name) const { return m_texts.value(name); }

    PromptTexts m_texts;
};

} // namespace ostrelle
