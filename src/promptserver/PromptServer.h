// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/PromptQuery.h"

#include <QJsonObject>
#include <QString>
#include <QUrl>
#include <functional>
#include <memory>

namespace ostrelle {

/// The six templates for a query, under their names. It is called from several threads at once.
using TemplateSource = std::function<QJsonObject(const PromptQuery& query)>;

/// Templates made from the texts that are built in.
TemplateSource builtInTemplates();

/// Where the prompt server listens, and to whom.
struct PromptServerOptions {
    QString address = QStringLiteral("127.0.0.1");
    int port = 0;        ///< 0: one of the system's choosing
    QString apiKey = {}; ///< what a request has to show in its header; empty serves everybody
};

/// A key that nobody else knows, for a server that only serves the program that it is in.
QString randomPromptKey();

/// Answers GET /api/prompt over HTTP in threads of its own, from the constructor's return to the destructor.
/// A connection that says nothing holds up the destructor for a second at most, no other for longer.
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
