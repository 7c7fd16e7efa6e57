// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/HttpChannel.h"

#include "services/ModelServiceFixture.h"
#include "services/TransportError.h"
#include "standins/StandInTranscription.h"
#include "support/FileInFolder.h"
#include "support/HangingThreads.h"

#include <sys/socket.h>

#include <QTcpServer>
#include <array>
#include <vector>

namespace ostrelle {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Delivery = StandInAnswer::Delivery;

/// The HTTP channel under the model service's client.
class HttpChannelTest : public ModelServiceTest {
protected:
    StandInAnswer held() const {
        return {.body = replyWithContent("\"A goal.\""), .delivery = Delivery::held};
    }
    void waitUntilAsManyAreAskedAsMayBe() const {
        waitUntil([this] { return standIn.requests().size() == HttpChannel::mostAtOnce; });
    }
};

TEST_F(HttpChannelTest, FailsOnceWhenTheConnectionEndsTooSoon) {
    ask(); // so that the connection is an old one, on which Qt would retry by itself
    for (const Delivery delivery : {Delivery::reset, Delivery::cutOff}) {
        for (const int status : {200, 401, 500}) {
            SCOPED_TRACE(status);
            const auto before = standIn.requests().size();
            standIn.enqueue(
                {.status = status, .body = replyWithContent("\"A goal.\""), .delivery = delivery});
            const auto error = failureOf<TransportError>(start(client));
            EXPECT_EQ(error.code(), QNetworkReply::RemoteHostClosedError);
            EXPECT_EQ(standIn.requests().size(), before + 1);
        }
    }
    EXPECT_NO_THROW(ask());
}

TEST_F(HttpChannelTest, FailsWhenNobodyListens) {
    QTcpServer closed;
    ASSERT_TRUE(closed.listen(QHostAddress::LocalHost));
    QUrl url(u"http://127.0.0.1"_s);
    url.setPort(closed.serverPort());
    closed.close();
    OpenAIClient lonely(url, defaults, log, clock);
    EXPECT_EQ(failureOf<TransportError>(start(lonely)).code(), QNetworkReply::ConnectionRefusedError);
}

TEST_F(HttpChannelTest, TakesInNoMoreThanABoundedReply) {
    QByteArray reply = replyWithContent("\"A goal.\"");
    reply += QByteArray(HttpChannel::largestReply - reply.size(), ' ');
    EXPECT_EQ(askWith({.body = reply}).text, u"A goal.");
    standIn.enqueue({.body = reply + ' '});
    EXPECT_EQ(failureOf<TransportError>(start(client)).localizedDescription(),
              u"The reply is larger than 4194304 bytes.");
}

TEST_F(HttpChannelTest, WaitsForAMinuteAndNoLonger) {
    for (const bool isInTime : {true, false}) {
        standIn.enqueue(held());
        QCoro::Task<CaptionReply> task = start(client);
        waitUntil([this] { return standIn.isHolding(); });
        clock.advance(isInTime ? 59'999ms : 60'000ms);
        if (isInTime) {
            standIn.releaseHeld();
            EXPECT_EQ(await(std::move(task)).text, u"A goal.");
        } else {
            const auto error = failureOf<TransportError>(std::move(task));
            EXPECT_TRUE(error.isTimeOut());
            EXPECT_EQ(error.localizedDescription(), u"The request timed out.");
        }
        EXPECT_EQ(clock.waiting(), 0);
    }
}

TEST_F(HttpChannelTest, ADripLivesUntilTheDeadline) {
    standIn.enqueue({.body = QByteArray(1000, ' '), .delivery = Delivery::held});
    QCoro::Task<CaptionReply> task = start(client);
    waitUntil([this] { return standIn.isHolding(); });
    standIn.sendHeld(200); // including the head
    for (int drip = 0; drip < 12; ++drip) {
        standIn.sendHeld(1);
        waitUntil([this] { return clock.untilNext() > 10s; }); // the byte has arrived
        EXPECT_FALSE(task.isReady());
        clock.advance(50s);
    }
    EXPECT_TRUE(failureOf<TransportError>(std::move(task)).isTimeOut());
}

TEST_F(HttpChannelTest, ASlowUploadIsNoTimeOut) {
    QTcpServer server; // like the far end of a slow line: the system buffers almost nothing
    server.listen(QHostAddress::LocalHost);
    server.pauseAccepting();
    const int listening = static_cast<int>(server.socketDescriptor());
    const int small = 4096;
    ASSERT_EQ(::setsockopt(listening, SOL_SOCKET, SO_RCVBUF, &small, sizeof small), 0);

    HttpChannel channel(clock);
    QNetworkRequest request(QUrl(u"http://127.0.0.1:%1/"_s.arg(server.serverPort())));
    request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
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

TEST_F(HttpChannelTest, ARequestThatWaitsItsTurnHasItsWholeTimeStillBeforeIt) {
    std::vector<QCoro::Task<CaptionReply>> tasks;
    for (int task = 0; task < 8; ++task) {
        standIn.enqueue(held());
        tasks.push_back(start(client));
    }
    waitUntilAsManyAreAskedAsMayBe();
    constexpr int timersEach = 3;
    EXPECT_EQ(clock.waiting(), timersEach * HttpChannel::mostAtOnce) << "no timers run for queued requests";
    clock.advance(HttpChannel::idleTimeOut - 1s);
    standIn.releaseHeld();
    waitUntil([this] { return standIn.requests().size() == 8; });
    clock.advance(HttpChannel::idleTimeOut - 1s);
    standIn.releaseHeld();
    for (QCoro::Task<CaptionReply>& task : tasks) {
        EXPECT_EQ(await(std::move(task)).text, u"A goal.");
    }
}

TEST_F(HttpChannelTest, FailsWhatIsInFlightAndInLineWhenItIsDestroyed) {
    // Each goes on to the next image after a failure, as a batch does.
    const auto failuresOfTwoCalls = [](OpenAIClient* asked) -> QCoro::Task<int> {
        int failures = 0;
        for (int call = 0; call < 2; ++call) {
            try {
                co_await start(*asked);
            } catch (const TransportError& error) {
                failures += error.isTimeOut() ? 0 : 1;
            }
        }
        co_return failures;
    };
    auto dying = std::make_unique<OpenAIClient>(standIn.url(), defaults, log, clock);
    std::vector<QCoro::Task<int>> callers;
    for (int caller = 0; caller < HttpChannel::mostAtOnce; ++caller) {
        standIn.enqueue(held());
        callers.push_back(failuresOfTwoCalls(dying.get()));
    }
    waitUntilAsManyAreAskedAsMayBe();
    auto inLine = start(*dying);
    waitUntil([&] { return log.lines.filter(u"JSON body size"_s).size() == HttpChannel::mostAtOnce + 1; });
    dying.reset();
    for (QCoro::Task<int>& caller : callers) {
        EXPECT_EQ(await(std::move(caller)), 2);
    }
    EXPECT_EQ(failureOf<TransportError>(std::move(inLine)).code(), QNetworkReply::OperationCanceledError);
    EXPECT_EQ(standIn.requests().size(), HttpChannel::mostAtOnce);
    EXPECT_EQ(clock.waiting(), 0);
}

TEST_F(HttpChannelTest, FailsWhatIsBeingEncodedOrReadWhenTheClientIsDestroyed) {
    const FileInFolder note(u"A001.WAV"_s, voiceNote(u"Number 12."_s));
    auto dying = std::make_unique<OpenAIClient>(standIn.url(), defaults, log, clock);
    HangingThreads workers(QThreadPool::globalInstance());
    auto caption = start(*dying);
    auto batch = dying->generateBatchCaptions({{}, {}}, captionPrompt, u"gpt-4o-mini"_s, 2000, 0.2);
    auto words = dying->transcribeAudio(note.path());
    log.lines.clear();
    dying.reset();
    workers.recover();
    const auto codeOf = [](auto task) { return failureOf<TransportError>(std::move(task)).code(); };
    EXPECT_EQ(codeOf(std::move(caption)), QNetworkReply::OperationCanceledError);
    EXPECT_EQ(codeOf(std::move(batch)), QNetworkReply::OperationCanceledError);
    EXPECT_EQ(codeOf(std::move(words)), QNetworkReply::OperationCanceledError);
    EXPECT_EQ(log.lines, QStringList());
    EXPECT_TRUE(standIn.requests().isEmpty());
}

} // namespace ostrelle
