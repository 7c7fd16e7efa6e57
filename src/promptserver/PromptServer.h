// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/PromptQuery.h"

#include <QJsonObject>
#include <QString>
#include <QUrl>
#include <functional>
#include <memory>

namespace ostrelle {

/// Returns the six templates for a query by name. Called from several threads at once.
using TemplateSource = std::function<QJsonObject(const PromptQuery& query)>;

/// Templates made from the built-in texts.
TemplateSource builtInTemplates();

/// Where the prompt server listens, and whom it serves.
struct PromptServerOptions {
    QString address = QStringLiteral("127.0.0.1");
    int port = 0;        ///< 0: the system chooses
    QString apiKey = {}; ///< required in a request's header; empty serves everybody
};

/// A random key, for a server that serves only its own program.
QString randomPromptKey();

/// Answers GET /api/prompt over HTTP on its own threads, from construction to destruction. A silent
/// connection delays the destructor for a second at most, and others no longer.
class PromptServer {
public:
    /// Throws Error when it cannot listen there.
    PromptServer(PromptServerOptions options, TemplateSource source);
    ~PromptServer();
    PromptServer(const PromptServer&) = delete;
    PromptServer& operator=(const PromptServer&) = delete;

    /// Scheme, address and port.
    QUrl url() const;

private:
    class Service;

    std::unique_ptr<Service> m_service;
};

} // namespace ostrelle
