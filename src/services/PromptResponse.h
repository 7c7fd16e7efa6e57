// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "services/JsonFields.h"
#include "services/PromptTemplates.h"

#include <QByteArray>
#include <QJsonObject>

namespace ostrelle {

/// Decodes the templates in a prompt server's reply. Throws PromptError::decodingError when a field is
/// missing or not a text.
PromptTemplates decodePromptResponse(const QByteArray& body);

/// Templates as a JSON object, and back. Throws JsonError when one of the six is missing.
QJsonObject toJson(const PromptTemplates& templates);
PromptTemplates templatesFromJson(const JsonFields& json);

} // namespace ostrelle
