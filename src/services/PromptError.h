// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Error.h"

#include <QString>

namespace ostrelle {

/// Prompt templates could not be fetched.
class PromptError : public Error {
public:
    enum class Case {
        networkError,
        serverError,
        decodingError,
        invalidURL,
        invalidResponse,
        unauthorized,
        cacheExpired,
    };

    /// No complete reply came; the text is the transport's.
    static PromptError networkError(const QString& underlying);
    /// The server replied with a status other than 200.
    static PromptError serverError(const QString& text);
    /// The reply does not have the documented form; the text says where.
    static PromptError decodingError(const QString& underlying);
    static PromptError invalidURL();
    static PromptError invalidResponse();
    static PromptError unauthorized();
    static PromptError cacheExpired();

    Case kind() const noexcept { return m_kind; }

private:
    PromptError(Case kind, QString description);

    Case m_kind;
};

} // namespace ostrelle
