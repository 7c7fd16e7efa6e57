// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace ostrelle {

/// The caption rules for one image, in the pieces its prompt is joined from.
struct PromptTemplates {
    QString commonRules;
    QString sportInstructions;
    QString styleRules;
    QString fallbackInstructions;
    QString audioInstructions;
    QString offenseDefenseInstructions;

    bool operator==(const PromptTemplates&) const = default;
};

} // namespace ostrelle
