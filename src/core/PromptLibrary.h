// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/CaptionStyle.h"
#include "core/FallbackBehavior.h"
#include "core/Sport.h"

#include <QMap>
#include <QString>
#include <QStringView>

namespace ostrelle {

/// The texts of the prompt library under their names, such as "apHead". Line breaks at either end are part of
/// a text.
using PromptTexts = QMap<QString, QString>;

/// The texts that are built in: the files of resources/prompts, named without ".txt".
PromptTexts builtInPromptTexts();

/// The built-in text of this name, or nothing. It needs no copy and lasts as long as the program.
QStringView promptLiteral(QStringView name);

/// What a set of texts tells the model about a sport, a style or a setting. A text that is missing is empty.
class PromptLibrary {
public:
    /// Where a mandatory rule for the roster goes: each prompt has its own layout of it.
    enum class Prompt { singleImage, batch };

    PromptLibrary() : PromptLibrary(builtInPromptTexts()) {}
    explicit PromptLibrary(PromptTexts texts);

    QString commonHead() const;
    QString commonData() const;
    QString sportRules(Sport sport) const;
    QString fallbackRules(FallbackBehavior behavior) const;
    /// How much weight the photographer's spoken note has.
    QString audioRules(bool isPriority) const;

    /// All of a style: its head, how players are identified, for sports with bibs when a number may be named,
    /// its body, and with offense and defense an example of players who share a number.
    QString styleRules(CaptionStyle style, Sport sport, bool includeOffenseDefense) const;
    /// The line that styleRules() ends with when offense and defense are told apart.
    QString offenseDefenseExample(CaptionStyle style) const;

    QString rosterHead() const;
    QString rosterTruncationNote() const;
    /// The rule that all players who share a number are named.
    QString rosterOffenseDefense(Prompt prompt) const;

private:
    QString bibRule(CaptionStyle style, Sport sport) const;
    QString identifyRule(CaptionStyle style, bool includeOffenseDefense) const;
    QString text(const QString& name) const { return m_texts.value(name); }

    PromptTexts m_texts;
};

} // namespace ostrelle
