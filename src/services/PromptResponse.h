// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "services/PromptTemplates.h"

#include <QByteArray>
#include <QJsonObject>
#include <QJsonValue>

namespace ostrelle {

/// The templates in the body of a prompt server's reply. Throws PromptError::decodingError when a field of
/// the reply is missing or not a text.
PromptTemplates decodePromptResponse(const QByteArray& body);

/// The object that the text consists of. Throws Error when it does not.
QJsonObject parseObject(const QByteArray& json);

/// The required text field of the object that stands at the path. Throws Error with the field's path.
QString requiredText(const QJsonObject& object, const QString& name, const QString& path);

/// The required object in that field, likewise.
QJsonObject requiredObject(const QJsonObject& object, const QString& name, const QString& path);

/// Templates as a JSON object, and back. Throws Error when one of the six is not there.
QJsonObject toJson(const PromptTemplates& templates);
PromptTemplates templatesFromJson(const QJsonObject& json, const QString& path);

} // namespace ostrelle
