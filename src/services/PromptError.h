// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Error.h"

#include <QString>

namespace ostrelle {

/// Why no prompt templates could be had.
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

    /// There was no complete answer; the text is the transport's.
    static PromptError networkError(const QString& underlying);
    /// The server answered with another status than 200.
    static PromptError serverError(const QString& text);
    /// The answer is not what the server promises; the text says where.
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
