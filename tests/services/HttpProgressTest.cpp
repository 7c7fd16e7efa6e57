// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/HttpChannel.h"
#include "services/TransportError.h"
#include "support/Await.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <QTcpServer>
#include <array>

namespace ostrelle {

using namespace std::chrono_literals;

namespace {

/// A server at the end of a slow line: it takes and gives bytes when it is told to, and the system keeps next
/// to none for it.
class SlowServer {
public:
    SlowServer() {
        m_listening.listen(QHostAddress::LocalHost);
        m_listening.pauseAccepting();
        const int small = 4096;
        ::setsockopt(static_cast<int>(m_listening.socketDescriptor()), SOL_SOCKET, SO_RCVBUF, &small,
                     sizeof small);
    }
    ~SlowServer() { ::close(m_connection); }
    SlowServer(const SlowServer&) = delete;
    SlowServer& operator=(const SlowServer&) = delete;

    QNetworkRequest request() const {
        QNetworkRequest request(QUrl(QStringLiteral("http://127.0.0.1:%1/").arg(m_listening.serverPort())));
        request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
        return request;
    }
    /// Waits for a client.
    void accept() {
        waitUntil([this] {
            m_connection = ::accept4(static_cast<int>(m_listening.socketDescriptor()), nullptr, nullptr,
                                     SOCK_NONBLOCK | SOCK_CLOEXEC);
            return m_connection >= 0;
        });
    }
    /// Waits for some bytes, a few at most; returns how many came.
    qsizetype take() const {
        std::array<char, 2048> bytes{};
        ssize_t got = 0;
        waitUntil([&] { return (got = ::recv(m_connection, bytes.data(), bytes.size(), 0)) > 0; });
        return got;
    }
    void give(const QByteArray& bytes) const {
        EXPECT_EQ(::send(m_connection, bytes.constData(), static_cast<std::size_t>(bytes.size()), 0),
                  bytes.size());
    }

private:
    QTcpServer m_listening;
    int m_connection = -1;
};

bool isTimeOut(QCoro::Task<HttpReply> task) {
    try {
        await(std::move(task));
    } catch (const TransportError& error) {
        return error.isTimeOut();
    }
    return false;
}

class HttpProgressTest : public testing::Test {
protected:
    /// Lets five minutes pass while the server takes in so many bytes.
    void takeSlowly(qsizetype whole) {
        for (qsizetype taken = 0; taken < whole;) {
            const qsizetype part = server.take();
            clock.advance(std::chrono::milliseconds(5min) * part / whole);
            taken += part;
        }
    }

    SlowServer server;
    VirtualClock clock;
    HttpChannel channel{clock};
};

} // namespace

TEST_F(HttpProgressTest, ASlowUploadIsNoTimeOutButSilenceAfterItIs) {
    for (const bool answers : {true, false}) {
        const QByteArray body(100'000, 'x');
        QCoro::Task<HttpReply> task = channel.post(server.request(), body);
        server.accept();
        takeSlowly(body.size());
        clock.advance(40s); // of sixty: the last bytes were acknowledged before they were taken
        EXPECT_FALSE(task.isReady());
        if (answers) {
            server.give("HTTP/1.1 200 OK\r\nContent-Length: 2\r\nConnection: close\r\n\r\n{}");
            EXPECT_EQ(await(std::move(task)).body, "{}");
        } else {
            clock.advance(20s);
            EXPECT_TRUE(isTimeOut(std::move(task)));
        }
        EXPECT_EQ(clock.waiting(), 0);
    }
}

TEST_F(HttpProgressTest, ADripLivesUntilTheDeadline) {
    QCoro::Task<HttpReply> task = channel.get(server.request(), 60s);
    server.accept();
    server.take();
    server.give("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n");
    const QDateTime start = clock.now();
    for (int drip = 0; drip < 12; ++drip) {
        server.give("x");
        waitUntil([this] { return clock.untilNext() > 10s; }); // which is when the byte has come
        EXPECT_FALSE(task.isReady());
        clock.advance(50s);
    }
    EXPECT_EQ(start.msecsTo(clock.now()), std::chrono::milliseconds(HttpChannel::deadline).count());
    EXPECT_TRUE(isTimeOut(std::move(task)));
}

} // namespace ostrelle
