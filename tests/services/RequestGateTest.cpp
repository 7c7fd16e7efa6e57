// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/HttpChannel.h"
#include "services/TransportError.h"
#include "support/Await.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

#include <QTcpServer>
#include <QTcpSocket>
#include <vector>

#include "standins/HttpRequestReader.h"

namespace ostrelle {

namespace {

/// A server that takes requests and answers when it is told to.
class PatientServer : public QObject {
public:
    PatientServer() {
        server.listen(QHostAddress::LocalHost);
        connect(&server, &QTcpServer::newConnection, this, [this] {
            QTcpSocket* socket = server.nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
                if (socket->readAll().contains("POST ")) {
                    waiting.push_back(socket);
                }
            });
        });
    }
    void answerAll() {
        for (QTcpSocket* socket : std::exchange(waiting, {})) {
            socket->write("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}");
        }
    }
    QNetworkRequest request() const {
        QNetworkRequest request(QUrl(QStringLiteral("http://127.0.0.1:%1/").arg(server.serverPort())));
        request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
        return request;
    }

    QTcpServer server;
    std::vector<QTcpSocket*> waiting;
};

std::vector<QCoro::Task<HttpReply>> post(HttpChannel& channel, const PatientServer& server, int count) {
    std::vector<QCoro::Task<HttpReply>> tasks;
    for (int index = 0; index < count; ++index) {
        tasks.push_back(channel.post(server.request(), "{}"));
    }
    return tasks;
}

} // namespace

TEST(RequestGate, ARequestThatWaitsItsTurnHasItsWholeTimeStillBeforeIt) {
    PatientServer server;
    VirtualClock clock;
    HttpChannel channel(clock);
    auto tasks = post(channel, server, 8);
    waitUntil([&server] { return server.waiting.size() == HttpChannel::mostAtOnce; });
    constexpr int timersEach = 3;
    EXPECT_EQ(clock.waiting(), timersEach * HttpChannel::mostAtOnce) << "no time runs for the others";
    clock.advance(HttpChannel::idleTimeOut - std::chrono::seconds(1));
    server.answerAll();
    waitUntil([&server] { return server.waiting.size() == 2; });
    clock.advance(HttpChannel::idleTimeOut - std::chrono::seconds(1));
    server.answerAll();
    for (QCoro::Task<HttpReply>& task : tasks) {
        EXPECT_EQ(await(std::move(task)).body, "{}");
    }
}

TEST(RequestGate, ThoseInLineAreSentAwayWithTheChannel) {
    PatientServer server;
    VirtualClock clock;
    auto channel = std::make_unique<HttpChannel>(clock);
    auto tasks = post(*channel, server, 8);
    waitUntil([&server] { return server.waiting.size() == HttpChannel::mostAtOnce; });
    channel.reset();
    for (QCoro::Task<HttpReply>& task : tasks) {
        EXPECT_THROW(await(std::move(task)), TransportError);
    }
}

} // namespace ostrelle
