// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/PromptQuery.h"
#include "pipeline/CodeReplacements.h"
#include "pipeline/ContextBlock.h"
#include "services/PromptTemplates.h"

#include <QString>
#include <QTimeZone>

namespace ostrelle {

/// The prompt for a single image: the facts, the roster and the rules of the templates, which must be those
/// for the query, then the present caption.
QString buildPrompt(const CaptionFacts& facts, const PromptQuery& query, const PromptTemplates& templates,
                    const CodeReplacements& replacements, const QTimeZone& zone);

/// The prompt that all images of a batch share: the roster and the built-in rules. The facts of each image go
/// beside it, see buildBatchContext().
QString buildBatchPrompt(const PromptQuery& query, const CodeReplacements& replacements,
                         const QString& audioNote = {});

} // namespace ostrelle
