// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/OpenAIError.h"

#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

OpenAIError::OpenAIError(Case kind, QString description, int statusCode, QString body)
    : Error(std::move(description)), m_kind(kind), m_statusCode(statusCode), m_body(std::move(body)) {}

OpenAIError OpenAIError::http(int statusCode, const QString& body) {
    return {Case::http, u"OpenAI HTTP "_s + QString::number(statusCode) + u": "_s + body, statusCode, body};
}

OpenAIError OpenAIError::decoding(const QString& text) {
    return {Case::decoding, u"Failed to decode OpenAI response: "_s + text};
}

OpenAIError OpenAIError::missingAPIKey() {
    return {Case::missingAPIKey, u"OpenAI API key is missing."_s};
}

OpenAIError OpenAIError::invalidResponse() {
    return {Case::invalidResponse, u"Invalid response from OpenAI."_s};
}

OpenAIError OpenAIError::noChoices() {
    return {Case::noChoices, u"No caption returned."_s};
}

OpenAIError OpenAIError::encoding() {
    return {Case::encoding, u"Failed to encode request."_s};
}

OpenAIError OpenAIError::cancelled() {
    return {Case::cancelled, u"Request was cancelled."_s};
}

} // namespace ostrelle
