// SPDX-License-Identifier: GPL-3.0-or-later
#include "standins/ModelStandIn.h"

#include "standins/ApiFault.h"
#include "standins/ChatRequestCheck.h"
#include "standins/StandInTranscription.h"

#include <sys/socket.h>

#include <QDateTime>
#include <QHostAddress>
#include <QJsonDocument>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <algorithm>
#include <limits>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QByteArray chatPath = "/v1/chat/completions";
const QByteArray transcriptionPath = "/v1/audio/transcriptions";
const QByteArray modelsPath = "/v1/models";

QByteArray encodedHead(const StandInAnswer& answer) {
    QByteArray head = "HTTP/1.1 " + QByteArray::number(answer.status) +
                      " Stand-in\r\n"
                      "Server: ostrelle-model-stand-in\r\n"
                      "Content-Type: application/json\r\n"
                      "Content-Length: " +
                      QByteArray::number(answer.body.size()) + "\r\n";
    for (const auto& [name, value] : answer.headers) {
        head += name + ": " + value + "\r\n";
    }
    return head + "\r\n";
}

void resetConnection(QTcpSocket& socket) {
    const linger atOnce{.l_onoff = 1, .l_linger = 0};
    ::setsockopt(static_cast<int>(socket.socketDescriptor()), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    socket.abort();
}

} // namespace

/// One client: its requests are answered one after the other.
class ModelStandIn::Connection : public QObject {
public:
    Connection(ModelStandIn& standIn, QTcpSocket* socket)
        : QObject(&standIn), m_standIn(standIn), m_socket(socket) {
        m_socket->setParent(this);
        connect(m_socket, &QTcpSocket::readyRead, this, &Connection::takeIn);
        connect(m_socket, &QTcpSocket::disconnected, this, &Connection::leave);
    }

    bool isHolding() const { return !m_held.isEmpty(); }

    void sendHeld(qsizetype count) {
        m_socket->write(m_held.left(count));
        m_held.remove(0, count);
        if (m_held.isEmpty()) {
            answerRequests();
        }
    }

private:
    void takeIn() {
        m_reader.feed(m_socket->readAll());
        answerRequests();
    }

    void leave() {
        m_standIn.m_connections.removeAll(this);
        deleteLater();
    }

    void answerRequests() {
        try {
            while (!isHolding() && !m_isDelaying && m_socket->isOpen()) {
                const std::optional<HttpRequest> request = m_reader.next();
                if (!request) {
                    return;
                }
                deliverInTime(m_standIn.answer(*request));
            }
        } catch (const ApiFault& fault) { // what follows such a request cannot be told apart from it
            deliver({.status = fault.status(), .body = fault.body(), .headers = {{"Connection", "close"}}});
            m_socket->disconnectFromHost();
        }
    }

    void deliverInTime(const StandInAnswer& answer) {
        if (m_standIn.m_delay.count() == 0) {
            deliver(answer);
            return;
        }
        m_isDelaying = true;
        QTimer::singleShot(m_standIn.m_delay, this, [this, answer] {
            m_isDelaying = false;
            deliver(answer);
            answerRequests();
        });
    }

    void deliver(const StandInAnswer& answer) {
        using Delivery = StandInAnswer::Delivery;
        switch (answer.delivery) {
        case Delivery::whole:
            m_socket->write(encodedHead(answer) + answer.body);
            break;
        case Delivery::held:
            m_held = encodedHead(answer) + answer.body;
            break;
        case Delivery::cutOff:
            m_socket->write(encodedHead(answer) + answer.body.left(answer.body.size() / 2));
            m_socket->disconnectFromHost();
            break;
        case Delivery::reset:
            resetConnection(*m_socket);
            break;
        }
    }

    ModelStandIn& m_standIn;
    QTcpSocket* m_socket;
    HttpRequestReader m_reader;
    QByteArray m_held;
    bool m_isDelaying = false;
};

ModelStandIn::ModelStandIn(QByteArray apiKey) : m_apiKey(std::move(apiKey)), m_server(new QTcpServer(this)) {
    connect(m_server, &QTcpServer::newConnection, this, &ModelStandIn::accept);
    if (!m_server->listen(QHostAddress::LocalHost)) {
        throw Error(u"The stand-in model cannot listen: "_s + m_server->errorString());
    }
}

QUrl ModelStandIn::url() const {
    QUrl url(u"http://127.0.0.1"_s);
    url.setPort(m_server->serverPort());
    return url;
}

QJsonObject ModelStandIn::lastJson() const {
    return m_requests.isEmpty() ? QJsonObject() : QJsonDocument::fromJson(m_requests.last().body).object();
}

bool ModelStandIn::isHolding() const {
    return std::any_of(m_connections.begin(), m_connections.end(),
                       [](const Connection* connection) { return connection->isHolding(); });
}

void ModelStandIn::sendHeld(qsizetype count) {
    const auto connections = m_connections; // one may disappear meanwhile
    for (Connection* connection : connections) {
        if (connection->isHolding()) {
            connection->sendHeld(count);
        }
    }
}

void ModelStandIn::releaseHeld() {
    sendHeld(std::numeric_limits<qsizetype>::max());
}

void ModelStandIn::accept() {
    while (QTcpSocket* socket = m_server->nextPendingConnection()) {
        m_connections.append(new Connection(*this, socket));
    }
}

void ModelStandIn::failEvery(qsizetype period, int status) {
    m_failurePeriod = period;
    m_failureStatus = status;
    m_sinceFailure = 0;
}

StandInAnswer ModelStandIn::answer(const HttpRequest& request) {
    m_requests.append(request);
    if (!m_keepsBodies) {
        m_requests.last().body.clear();
    }
    try {
        checkHead(request);
        return replaced(ownAnswer(request));
    } catch (const ApiFault& fault) {
        return {.status = fault.status(), .body = fault.body()};
    }
}

void ModelStandIn::checkHead(const HttpRequest& request) const {
    if (request.path != chatPath && request.path != transcriptionPath && request.path != modelsPath) {
        throw ApiFault(404, u"Invalid URL."_s);
    }
    if (request.method != (request.path == modelsPath ? "GET" : "POST")) {
        throw ApiFault(405, u"Not allowed to %1."_s.arg(QString::fromLatin1(request.method)));
    }
    if (request.header("Authorization").trimmed() != "Bearer " + m_apiKey) {
        throw ApiFault(401, u"Incorrect API key provided."_s);
    }
}

QByteArray ModelStandIn::ownAnswer(const HttpRequest& request) const {
    if (request.path == modelsPath) {
        return R"({"object": "list", "data": []})";
    }
    if (request.path == transcriptionPath) {
        return standInTranscription(checkTranscriptionRequest(request));
    }
    if (request.header("Content-Type") != "application/json") {
        throw ApiFault(400, u"Unsupported content type."_s);
    }
    return standInCompletion(checkChatRequest(request.body), m_requests.size(),
                             QDateTime::currentSecsSinceEpoch(), m_batchForm);
}

StandInAnswer ModelStandIn::replaced(QByteArray ownBody) {
    if (!m_answers.isEmpty()) {
        return m_answers.takeFirst();
    }
    if (m_failurePeriod > 0 && ++m_sinceFailure == m_failurePeriod) {
        m_sinceFailure = 0;
        throw ApiFault(m_failureStatus, u"The stand-in model fails as it was told to."_s);
    }
    return {.status = 200, .body = std::move(ownBody)};
}

} // namespace ostrelle
