// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/PromptQuery.h"
#include "pipeline/CodeReplacements.h"
#include "pipeline/ContextBlock.h"
#include "services/PromptTemplates.h"

#include <QString>
#include <QTimeZone>

namespace ostrelle {

/// The text that goes to the model with one image: the facts, the roster and the rules of the templates,
/// which came for the query, then the caption that the image has now.
QString buildPrompt(const CaptionFacts& facts, const PromptQuery& query, const PromptTemplates& templates,
                    const CodeReplacements& replacements, const QTimeZone& zone);

/// The text that goes to the model once for all images of a batch: the roster and the built-in rules. What
/// is known of each image goes beside it, see buildBatchContext().
QString buildBatchPrompt(const PromptQuery& query, const CodeReplacements& replacements,
                         const QString& audioNote = {});

} // namespace ostrelle
