// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/PromptLibrary.h"
#include "core/PromptQuery.h"

#include <QJsonObject>

namespace ostrelle {

/// The six templates for the query, made from the library so that the prompt of one image holds each rule
/// that the prompt of a batch holds, once.
QJsonObject makeTemplates(const PromptQuery& query, const PromptLibrary& library);

/// The built-in texts that templates are made from. Those for the roster are not among them: they are the
/// client's.
PromptTexts builtInTemplateTexts();

} // namespace ostrelle
