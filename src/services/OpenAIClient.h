// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"
#include "platform/DefaultsStore.h"
#include "platform/PlainLog.h"
#include "services/ChatRequest.h"
#include "services/ChatResponse.h"
#include "services/HttpChannel.h"

#include <QByteArray>
#include <QCoroTask>
#include <QString>
#include <QUrl>
#include <optional>

namespace ostrelle {

/// A caption and what it cost, if the service said.
struct CaptionReply {
    QString text;
    std::optional<Usage> usage;
};

/// The program's connection to the model service. It retries nothing and remembers nothing: each call reads
/// the API key anew. Destroying it fails the calls in flight with a TransportError.
class OpenAIClient {
public:
    /// `modelUrl` is the service's scheme and host. All references must outlive the client.
    OpenAIClient(QUrl modelUrl, const DefaultsStore& defaults, PlainLog& log, Clock& clock);

    /// Asks for the caption of one picture. Throws OpenAIError, or TransportError when no complete answer
    /// came within a minute.
    QCoro::Task<CaptionReply> generateCaption(QByteArray jpeg, QString prompt, QString model,
                                              int maximumTokens, double temperature);

private:
    QNetworkRequest jsonRequest(const QString& path, const QString& key) const;
    ImageBlock imageBlock(const QByteArray& jpeg);
    ChatResponse chatResponse(const HttpReply& reply, const QString& key);
    CaptionReply captionReply(const ChatResponse& response);

    QUrl m_modelUrl;
    const DefaultsStore& m_defaults;
    PlainLog& m_log;
    HttpChannel m_channel;
};

} // namespace ostrelle
