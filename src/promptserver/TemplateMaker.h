// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/PromptLibrary.h"
#include "core/PromptQuery.h"

#include <QJsonObject>

namespace ostrelle {

/// Makes the six templates for the query, such that the prompt of one image holds each rule of a batch's
/// prompt exactly once.
QJsonObject makeTemplates(const PromptQuery& query, const PromptLibrary& library);

/// The built-in texts that templates are made from. The roster's texts are not among them: those belong to
/// the client.
PromptTexts builtInTemplateTexts();

} // namespace ostrelle
