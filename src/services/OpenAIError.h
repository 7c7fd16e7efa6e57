// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Error.h"

#include <QString>

namespace ostrelle {

/// A request that the model service failed, rather than the transport.
class OpenAIError : public Error {
public:
    enum class Case { http, decoding, missingAPIKey, invalidResponse, noChoices, encoding, cancelled };

    /// The service answered with a status outside 200 to 299.
    static OpenAIError http(int statusCode, const QString& body);
    /// The reply does not have the documented form; `text` says where.
    static OpenAIError decoding(const QString& text);
    static OpenAIError missingAPIKey();
    static OpenAIError invalidResponse();
    static OpenAIError noChoices();
    static OpenAIError encoding();
    static OpenAIError cancelled();

    Case kind() const noexcept { return m_kind; }
    /// The status of an `http` failure, otherwise 0.
    int statusCode() const noexcept { return m_statusCode; }
    /// The whole body of an `http` failure, otherwise empty.
    const QString& body() const noexcept { return m_body; }

private:
    OpenAIError(Case kind, QString description, int statusCode = 0, QString body = {});

    Case m_kind;
    int m_statusCode;
    QString m_body;
};

} // namespace ostrelle
