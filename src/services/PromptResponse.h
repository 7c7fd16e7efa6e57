// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "services/JsonFields.h"
#include "services/PromptTemplates.h"

#include <QByteArray>
#include <QJsonObject>

namespace ostrelle {

/// The templates in the body of a prompt server's reply. Throws PromptError::decodingError when a field of
/// the reply is missing or not a text.
PromptTemplates decodePromptResponse(const QByteArray& body);

/// Templates as a JSON object, and back. Throws JsonError when one of the six is not there.
QJsonObject toJson(const PromptTemplates& templates);
PromptTemplates templatesFromJson(const JsonFields& json);

} // namespace ostrelle
