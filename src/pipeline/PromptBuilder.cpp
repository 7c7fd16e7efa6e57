// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/PromptBuilder.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

QString buildPrompt(const CaptionFacts& facts, const QTimeZone& zone) {
    return contextBlock(facts, zone) + u"\nExisting caption (may be minimal): "_s + facts.defaultCaption;
}

} // namespace ostrelle
