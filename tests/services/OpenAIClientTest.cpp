// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/ChatRequest.h"
#include "services/ModelServiceFixture.h"
#include "services/TransportError.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QTcpServer>
#include <limits>

namespace ostrelle {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Delivery = StandInAnswer::Delivery;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const QString prompt = u"Context:\n- Event: Harbor Classic\n- Sport: Soccer\n\nUse “AP” style."_s;

} // namespace

class OpenAIClientTest : public ModelServiceTest {
protected:
    static QCoro::Task<CaptionReply> start(OpenAIClient& asked) {
        return asked.generateCaption(smallJpeg(), prompt, u"gpt-4o-mini"_s, 180, 0.2);
    }
    CaptionReply ask() { return await(start(client)); }
    CaptionReply askWith(StandInAnswer answer) {
        standIn.enqueue(std::move(answer));
        return ask();
    }

    /// A reply with a good choice and this JSON as its usage.
    static QByteArray replyWithUsage(const QByteArray& usage) {
        return withUsage(replyWithContent("\"A goal.\""), usage);
    }

    OpenAIError refusal(StandInAnswer answer) {
        log.lines.clear();
        standIn.enqueue(std::move(answer));
        return failureOf<OpenAIError>(start(client));
    }
};

TEST_F(OpenAIClientTest, SendsOneRequestAndReturnsCaptionAndUsage) {
    const QByteArray jpeg = smallJpeg() + QByteArray(1'300'000, '\0');
    const CaptionReply reply = await(client.generateCaption(jpeg, prompt, u"gpt-4o-mini"_s, 180, 0.2));

    ASSERT_EQ(standIn.requests().size(), 1);
    const HttpRequest& request = standIn.requests().first();
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, "/v1/chat/completions");
    EXPECT_EQ(request.header("Authorization"), "Bearer " + key.toUtf8());
    EXPECT_EQ(request.header("Content-Type"), "application/json");
    const QByteArray expected = R"({
        "model": "gpt-4o-mini",
        "messages": [
            {"role": "system", "content": [{"type": "text", "text": "Return one factual sports caption."}]},
            {"role": "user", "content": [
                {"type": "text", "text": "Context:\n- Event: Harbor Classic\n- Sport: Soccer\n\nUse “AP” style."},
                {"type": "image_url", "image_url": {"url": "data:image/jpeg;base64,JPEG", "detail": "low"}}]}],
        "temperature": 0.2,
        "max_tokens": 180})";
    EXPECT_EQ(standIn.lastJson(),
              QJsonDocument::fromJson(QByteArray(expected).replace("JPEG", jpeg.toBase64())).object());

    EXPECT_EQ(reply.text, standInCaption(prompt));
    ASSERT_TRUE(reply.usage);
    EXPECT_THAT(log.lines,
                ElementsAre(u"[OpenAIClient] JPEG bytes: %1 (1.24 MB)"_s.arg(jpeg.size()),
                            u"[OpenAIClient] base64 length: %1 characters"_s.arg(jpeg.toBase64().size()),
                            u"[OpenAIClient] JSON body size: %1 bytes"_s.arg(request.body.size()),
                            u"[OpenAIClient] Usage: %1 prompt + %2 completion = %3 total tokens"_s
                                .arg(reply.usage->promptTokens)
                                .arg(reply.usage->completionTokens)
                                .arg(reply.usage->totalTokens)));
}

TEST(ChatRequestTest, LeavesOutWhatIsAbsent) {
    const ChatRequest request{
        .model = u"m"_s,
        .messages = {{.role = u"user"_s, .content = {ImageBlock{.jpeg = "u", .detail = {}}}}},
        .temperature = {},
        .maximumTokens = {}};
    EXPECT_EQ(QJsonDocument::fromJson(encode(request)), QJsonDocument::fromJson(R"({"model":"m",
        "messages":[{"role":"user","content":[{"type":"image_url","image_url":{"url":"data:image/jpeg;base64,dQ=="}}]}]})"));
    EXPECT_FALSE(encode(request).contains('\n'));
}

TEST_F(OpenAIClientTest, RefusesWhatCannotBeEncodedWithoutARequest) {
    const auto expectRefusal = [this](const QString& text, double temperature) {
        const auto error = failureOf<OpenAIError>(
            client.generateCaption(smallJpeg(), text, u"gpt-4o-mini"_s, 180, temperature));
        EXPECT_EQ(error.kind(), OpenAIError::Case::encoding);
        EXPECT_EQ(error.localizedDescription(), u"Failed to encode request.");
    };
    expectRefusal(prompt, std::numeric_limits<double>::quiet_NaN());
    expectRefusal(prompt, std::numeric_limits<double>::infinity());
    expectRefusal(prompt + QChar(0xD83D), 0.2); // half of an emoji
    defaults.set(apiKeyName, key + u"\r\nX-Other: header"_s);
    expectRefusal(prompt, 0.2);
    EXPECT_THAT(standIn.requests(), IsEmpty());
}

TEST_F(OpenAIClientTest, ReadsTheKeyAnewForEachCall) {
    defaults.remove(apiKeyName);
    EXPECT_EQ(failureOf<OpenAIError>(start(client)).kind(), OpenAIError::Case::missingAPIKey);
    defaults.set(apiKeyName, QString());
    EXPECT_EQ(failureOf<OpenAIError>(start(client)).localizedDescription(), u"OpenAI API key is missing.");
    EXPECT_THAT(log.lines, IsEmpty());
    EXPECT_THAT(standIn.requests(), IsEmpty());

    defaults.set(apiKeyName, u"   "_s); // not trimmed, so not empty
    EXPECT_EQ(failureOf<OpenAIError>(start(client)).statusCode(), 401);
    EXPECT_EQ(standIn.requests().last().header("Authorization"), "Bearer    ");

    defaults.set(apiKeyName, key);
    EXPECT_NO_THROW(ask());
}

TEST_F(OpenAIClientTest, NeverTellsTheKey) {
    for (const int status : {401, 200}) {
        const OpenAIError error = refusal({.status = status, .body = "Wrong key: " + key.toUtf8()});
        EXPECT_FALSE(error.localizedDescription().contains(key));
        EXPECT_FALSE(error.body().contains(key));
        EXPECT_THAT(log.lines.filter(key), IsEmpty());
        EXPECT_TRUE(log.lines.last().endsWith(u"Wrong key: [API key]"));
    }
}

TEST_F(OpenAIClientTest, ReadsEveryFormOfContent) {
    const struct {
        const char* content;
        const char* caption; ///< null: there is none
    } rows[] = {
        {R"("A goal.")", "A goal."},
        {R"("\n A  goal.\t\n\n")", "A  goal."},
        {R"([{"type":"text","text":"A"},{"type":"text","text":"goal."}])", "A goal."},
        {R"([{"type":"image_url"},{"text":"A"},{"type":"reasoning","text":"goal."},{"text":null}])",
         "A goal."},
        {R"(" \n ")", nullptr},
        {R"([])", nullptr},
        {R"(["A goal."])", nullptr},
        {R"([{"type":"text","text":"A goal."},{"text":5}])", nullptr},
        {R"(null)", nullptr},
        {R"({"text":"A goal."})", nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.content);
        if (row.caption) {
            EXPECT_EQ(askWith({.body = replyWithContent(row.content)}).text, QString::fromUtf8(row.caption));
        } else {
            const OpenAIError error = refusal({.body = replyWithContent(row.content)});
            EXPECT_EQ(error.kind(), OpenAIError::Case::noChoices);
            EXPECT_EQ(error.localizedDescription(), u"No caption returned.");
        }
    }
    EXPECT_EQ(refusal({.body = R"({"id":"c","choices":[]})"}).kind(), OpenAIError::Case::noChoices);
}

TEST_F(OpenAIClientTest, RefusesWhatIsTooLongForACaption) {
    const QString longest(longestCaption, u'x');
    EXPECT_EQ(askWith({.body = replyWithText(longest)}).text, longest);
    EXPECT_EQ(refusal({.body = replyWithText(longest + u'x')}).localizedDescription(),
              u"Failed to decode OpenAI response: The caption is longer than 32768 characters.");
}

TEST_F(OpenAIClientTest, ReturnsNoUsageWhenTheReplyHasNone) {
    for (const QByteArray& body : {replyWithContent("\"A goal.\""), replyWithUsage("null")}) {
        const CaptionReply reply = askWith({.body = body});
        EXPECT_EQ(reply.text, u"A goal.");
        EXPECT_FALSE(reply.usage);
    }
    EXPECT_THAT(log.lines.filter(u"Usage"_s), IsEmpty());

    const auto whole = askWith(
        {.body = replyWithUsage(R"({"prompt_tokens":7.0,"completion_tokens":2,"total_tokens":9,"new":{}})")});
    EXPECT_EQ(whole.usage, (Usage{.promptTokens = 7, .completionTokens = 2, .totalTokens = 9}));
}

TEST_F(OpenAIClientTest, TellsWhichFieldOfAReplyIsOff) {
    const struct {
        QByteArray body;
        const char* text;
    } rows[] = {
        {"<html>busy</html>", "This is not JSON: illegal value at byte 1."},
        {"[]", "This is not an object."},
        {R"({"id":null,"choices":[]})", "The field \"id\" is missing."},
        {R"({"id":1,"choices":[]})", "The field \"id\" is not a text."},
        {R"({"id":"c","choices":{}})", "The field \"choices\" is not a list."},
        {R"({"id":"c","choices":["A goal."]})", "The field \"choices[0]\" is not an object."},
        {R"({"id":"c","choices":[{"index":0.5,"message":{"role":"assistant"}}]})",
         "The field \"choices[0].index\" is not an integer."},
        {R"({"id":"c","choices":[{"index":0,"message":{"content":"A goal."}}]})",
         "The field \"choices[0].message.role\" is missing."},
        {R"({"id":"c","choices":[{"index":0,"message":{"role":"assistant"},"finish_reason":3}]})",
         "The field \"choices[0].finish_reason\" is not a text."},
        {replyWithUsage("[]"), "The field \"usage\" is not an object."},
        {replyWithUsage(R"({"prompt_tokens":1,"completion_tokens":1})"),
         "The field \"usage.total_tokens\" is missing."},
        {replyWithUsage(R"({"prompt_tokens":1,"completion_tokens":1e30,"total_tokens":2})"),
         "The field \"usage.completion_tokens\" is not an integer."},
        {replyWithUsage(R"({"prompt_tokens":-1,"completion_tokens":1,"total_tokens":0})"),
         "prompt_tokens is no number of tokens: -1"},
        {replyWithUsage(R"({"prompt_tokens":1,"completion_tokens":1000000001,"total_tokens":2})"),
         "completion_tokens is no number of tokens: 1000000001"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.body.constData());
        const OpenAIError error = refusal({.body = row.body});
        EXPECT_EQ(error.kind(), OpenAIError::Case::decoding);
        EXPECT_EQ(error.localizedDescription(),
                  u"Failed to decode OpenAI response: "_s + QString::fromUtf8(row.text));
        EXPECT_EQ(log.lines.last(),
                  u"[OpenAIClient] Decode failed. Body follows:\n"_s + QString::fromUtf8(row.body));
    }
    EXPECT_EQ(refusal({.body = replyWithContent("\"\xff\"")}).kind(), OpenAIError::Case::decoding);
    EXPECT_EQ(log.lines.last(), u"[OpenAIClient] Decode failed. Body follows:\n<non-utf8 body>");
    // Deeper than any reply, and a stack's worth of brackets.
    EXPECT_EQ(refusal({.body = QByteArray(1'000'000, '[')}).kind(), OpenAIError::Case::decoding);
}

TEST_F(OpenAIClientTest, PassesOnWhatTheServiceSaysWithAnErrorStatus) {
    const QByteArray said = "{\"error\": {\n  \"message\": \"No “such” thing\"}}";
    for (const int status : {300, 302, 400, 401, 403, 404, 407, 429, 500, 503, 529}) {
        SCOPED_TRACE(status);
        const OpenAIError error =
            refusal({.status = status,
                     .body = said,
                     .headers = {{"Location", standIn.url().toEncoded() + "/v1/chat/completions"},
                                 {"WWW-Authenticate", "Basic realm=\"model\""},
                                 {"Retry-After", "1"}}});
        const QString body = QString::fromUtf8(said);
        EXPECT_EQ(error.kind(), OpenAIError::Case::http);
        EXPECT_EQ(error.statusCode(), status);
        EXPECT_EQ(error.body(), body);
        EXPECT_EQ(error.localizedDescription(), u"OpenAI HTTP %1: "_s.arg(status) + body);
        EXPECT_EQ(log.lines.last(), u"[OpenAIClient] HTTP %1 body:\n"_s.arg(status) + body);
    }
    EXPECT_EQ(standIn.requests().size(), 11) << "a redirect was followed or a request repeated";
    EXPECT_EQ(refusal({.status = 500, .body = "bad \xc3("}).localizedDescription(), u"OpenAI HTTP 500: ");
}

TEST_F(OpenAIClientTest, RefusesAnAnswerWithoutAStatusOfHttp) {
    const OpenAIError error = refusal({.status = 99, .body = replyWithContent("\"A goal.\"")});
    EXPECT_EQ(error.kind(), OpenAIError::Case::invalidResponse);
    EXPECT_EQ(error.localizedDescription(), u"Invalid response from OpenAI.");
}

TEST_F(OpenAIClientTest, FailsOnceWhenTheConnectionEndsTooSoon) {
    ask(); // so that the connection is an old one, which Qt would try again by itself
    for (const Delivery delivery : {Delivery::reset, Delivery::cutOff}) {
        for (const int status : {200, 401, 500}) {
            SCOPED_TRACE(status);
            const auto before = standIn.requests().size();
            standIn.enqueue({.status = status, .body = replyWithUsage("null"), .delivery = delivery});
            const auto error = failureOf<TransportError>(start(client));
            EXPECT_EQ(error.code(), QNetworkReply::RemoteHostClosedError);
            EXPECT_EQ(standIn.requests().size(), before + 1);
        }
    }
    EXPECT_NO_THROW(ask());
}

TEST_F(OpenAIClientTest, FailsWhenNobodyListens) {
    QTcpServer closed;
    ASSERT_TRUE(closed.listen(QHostAddress::LocalHost));
    QUrl url(u"http://127.0.0.1"_s);
    url.setPort(closed.serverPort());
    closed.close();
    OpenAIClient lonely(url, defaults, log, clock);
    EXPECT_EQ(failureOf<TransportError>(start(lonely)).code(), QNetworkReply::ConnectionRefusedError);
}

TEST_F(OpenAIClientTest, TakesInNoMoreThanABoundedReply) {
    QByteArray reply = replyWithContent("\"A goal.\"");
    reply += QByteArray(HttpChannel::largestReply - reply.size(), ' ');
    EXPECT_EQ(askWith({.body = reply}).text, u"A goal.");
    standIn.enqueue({.body = reply + ' '});
    EXPECT_EQ(failureOf<TransportError>(start(client)).localizedDescription(),
              u"The reply is larger than 4194304 bytes.");
}

TEST_F(OpenAIClientTest, WaitsForAMinuteAndNoLonger) {
    for (const bool isInTime : {true, false}) {
        standIn.enqueue({.body = replyWithContent("\"A goal.\""), .delivery = Delivery::held});
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

TEST_F(OpenAIClientTest, ADripLivesUntilTheDeadline) {
    standIn.enqueue({.body = QByteArray(1000, ' '), .delivery = Delivery::held});
    QCoro::Task<CaptionReply> task = start(client);
    waitUntil([this] { return standIn.isHolding(); });
    standIn.sendHeld(200); // the head, too
    for (int drip = 0; drip < 12; ++drip) {
        standIn.sendHeld(1);
        waitUntil([this] { return clock.untilNext() > 10s; }); // which is when the byte has come
        EXPECT_FALSE(task.isReady());
        clock.advance(50s);
    }
    EXPECT_TRUE(failureOf<TransportError>(std::move(task)).isTimeOut());
}

TEST_F(OpenAIClientTest, KeepsCallsInFlightApart) {
    const auto startWith = [this](const QString& event) {
        return client.generateCaption(smallJpeg(), u"Context:\n- Event: "_s + event, u"gpt-4o-mini"_s, 180,
                                      0.2);
    };
    QCoro::Task<CaptionReply> first = startWith(u"Harbor Classic"_s);
    QCoro::Task<CaptionReply> second = startWith(u"Hill Cup"_s);
    EXPECT_TRUE(await(std::move(second)).text.contains(u"Hill Cup"));
    EXPECT_TRUE(await(std::move(first)).text.contains(u"Harbor Classic"));
}

namespace {

/// A caller that goes on to the next image after a failure, as a batch does.
QCoro::Task<int> failuresOfTwoCalls(OpenAIClient* client, QByteArray jpeg) {
    int failures = 0;
    for (int call = 0; call < 2; ++call) {
        try {
            co_await client->generateCaption(jpeg, prompt, u"gpt-4o-mini"_s, 180, 0.2);
        } catch (const TransportError& error) {
            failures += error.isTimeOut() ? 0 : 1;
        }
    }
    co_return failures;
}

} // namespace

TEST_F(OpenAIClientTest, FailsWhatIsInFlightWhenItIsDestroyed) {
    auto dying = std::make_unique<OpenAIClient>(standIn.url(), defaults, log, clock);
    standIn.enqueue({.delivery = Delivery::held});
    QCoro::Task<int> task = failuresOfTwoCalls(dying.get(), smallJpeg());
    waitUntil([this] { return standIn.isHolding(); });
    dying.reset();
    EXPECT_EQ(await(std::move(task)), 2);
    EXPECT_EQ(standIn.requests().size(), 1);
    EXPECT_EQ(clock.waiting(), 0);
}

TEST_F(OpenAIClientTest, FailsWhatIsBeingEncodedWhenItIsDestroyed) {
    auto dying = std::make_unique<OpenAIClient>(standIn.url(), defaults, log, clock);
    auto busy = std::make_unique<BusyWorkers>();
    QCoro::Task<CaptionReply> task = start(*dying);
    QCoro::Task<BatchCaptionReply> batch =
        dying->generateBatchCaptions({{}, {}}, prompt, u"gpt-4o-mini"_s, 2000, 0.2);
    dying.reset();
    busy.reset();
    EXPECT_EQ(failureOf<TransportError>(std::move(task)).code(), QNetworkReply::OperationCanceledError);
    EXPECT_EQ(failureOf<TransportError>(std::move(batch)).code(), QNetworkReply::OperationCanceledError);
    EXPECT_THAT(standIn.requests(), IsEmpty());
}

} // namespace ostrelle
