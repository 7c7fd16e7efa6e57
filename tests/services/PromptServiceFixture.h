// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "promptserver/PromptServer.h"
#include "services/PromptError.h"
#include "services/PromptResponse.h"
#include "services/PromptService.h"
#include "support/Failure.h"
#include "support/FileFacts.h"
#include "support/RecordingLog.h"
#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <atomic>

namespace ostrelle {

inline const QString promptKey = QStringLiteral("pk-0123456789abcdef-ß");
inline const QString apKey = QStringLiteral("v1-apSports-football-attemptCaption-true-false");

inline PromptQuery query() {
    return {.includeOffenseDefense = true};
}

inline PromptTemplates templatesNumber(int number) {
    const auto text = [number](const QString& name) {
        return name + QStringLiteral(" “é” ") + QString::number(number);
    };
    return {.commonRules = text(QStringLiteral("common")),
            .sportInstructions = text(QStringLiteral("sport")),
            .styleRules = text(QStringLiteral("style")),
            .fallbackInstructions = text(QStringLiteral("fallback")),
            .audioInstructions = text(QStringLiteral("audio")),
            .offenseDefenseInstructions = {}};
}

/// A prompt server whose templates are numbered in the order of the requests.
class CountingServer {
public:
    QUrl url() const { return m_server.url(); }
    int requests() const { return *m_requests; }

private:
    std::shared_ptr<std::atomic_int> m_requests = std::make_shared<std::atomic_int>(0);
    PromptServer m_server{{.apiKey = promptKey}, [requests = m_requests](const PromptQuery&) {
                              return toJson(templatesNumber(++*requests));
                          }};
};

/// A server that sends a prepared answer and records the requests. Without an answer it stays silent.
class CannedServer : public QObject {
public:
    CannedServer() {
        m_server.listen(QHostAddress::LocalHost);
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            QTcpSocket* socket = m_server.nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
                heads.append(socket->readAll());
                sockets.append(socket);
                if (!answer.isEmpty()) {
                    answerRequest(heads.size() - 1);
                }
            });
        });
    }
    QUrl url() const { return QUrl(QStringLiteral("http://127.0.0.1:%1").arg(m_server.serverPort())); }
    void say(const QByteArray& status, const QByteArray& body) {
        answer = "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size()) +
                 "\r\nConnection: close\r\n\r\n" + body;
    }
    /// Answers a request that it met with silence.
    void answerRequest(qsizetype index) {
        sockets[index]->write(answer);
        sockets[index]->disconnectFromHost();
    }

    QByteArray answer;
    QList<QByteArray> heads;
    QList<QTcpSocket*> sockets;

private:
    QTcpServer m_server;
};

inline QByteArray json(const PromptTemplates& templates) {
    return QJsonDocument(toJson(templates)).toJson(QJsonDocument::Compact);
}

inline QByteArray goodReply(int number = 1) {
    return R"({"version":"v1","style":"apSports","sport":"football","templates":)" +
           json(templatesNumber(number)) + R"(,"metadata":{"fetchedAt":"x","cacheKey":"y"}})";
}

class PromptServiceTest : public testing::Test {
protected:
    std::unique_ptr<PromptService> serviceAt(const QUrl& url) {
        return std::make_unique<PromptService>(PromptAccess{.url = url, .key = promptKey}, cacheFile(), log,
                                               clock);
    }
    QString cacheFile() const { return folder.filePath(QStringLiteral("made/on demand/prompt-cache.json")); }
    void putCacheFile(const QByteArray& bytes) const {
        QDir(folder.path()).mkpath(QStringLiteral("made/on demand"));
        writeFile(cacheFile(), bytes);
    }

    QTemporaryDir folder;
    RecordingLog log;
    VirtualClock clock;
};

} // namespace ostrelle
