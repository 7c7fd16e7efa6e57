// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/HttpChannel.h"
#include "support/Await.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <QTcpServer>
#include <array>

namespace ostrelle {

using namespace std::chrono_literals;

TEST(HttpProgress, ASlowUploadIsNoTimeOut) {
    QTcpServer server; // as it is at the end of a slow line: the system keeps next to nothing for it
    server.listen(QHostAddress::LocalHost);
    server.pauseAccepting();
    const int listening = static_cast<int>(server.socketDescriptor());
    const int small = 4096;
    ASSERT_EQ(::setsockopt(listening, SOL_SOCKET, SO_RCVBUF, &small, sizeof small), 0);

    VirtualClock clock;
    HttpChannel channel(clock);
    QNetworkRequest request(QUrl(QStringLiteral("http://127.0.0.1:%1/").arg(server.serverPort())));
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
    const QByteArray body(100'000, 'x');
    QCoro::Task<HttpReply> task = channel.post(request, body);
    int connection = -1;
    waitUntil([&] { return (connection = ::accept4(listening, nullptr, nullptr, SOCK_NONBLOCK)) >= 0; });
    std::array<char, 2048> part{};
    for (qsizetype taken = 0; taken < body.size();) {
        ssize_t got = 0;
        waitUntil([&] { return (got = ::recv(connection, part.data(), part.size(), 0)) > 0; });
        clock.advance(std::chrono::milliseconds(5min) * got / body.size());
        taken += got;
    }
    const QByteArray reply = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}";
    ASSERT_EQ(::send(connection, reply.constData(), static_cast<std::size_t>(reply.size()), 0), reply.size());
    EXPECT_EQ(await(std::move(task)).body, "{}");
    ::close(connection);
}

} // namespace ostrelle
