// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/PromptError.h"

#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

PromptError::PromptError(Case kind, QString description) : Error(std::move(description)), m_kind(kind) {}

PromptError PromptError::networkError(const QString& underlying) {
    return {Case::networkError, u"Network error: "_s + underlying};
}

PromptError PromptError::serverError(const QString& text) {
    return {Case::serverError, u"Server error: "_s + text};
}

PromptError PromptError::decodingError(const QString& underlying) {
    return {Case::decodingError, u"Failed to decode response: "_s + underlying};
}

PromptError PromptError::invalidURL() {
    return {Case::invalidURL, u"Invalid prompt API URL"_s};
}

PromptError PromptError::invalidResponse() {
    return {Case::invalidResponse, u"Invalid response from prompt server"_s};
}

PromptError PromptError::unauthorized() {
    return {Case::unauthorized, u"Unauthorized - API key invalid"_s};
}

PromptError PromptError::cacheExpired() {
    return {Case::cacheExpired, u"Cached prompt expired"_s};
}

} // namespace ostrelle
