// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/KeyCheck.h"
#include "services/ModelServiceFixture.h"
#include "standins/StandInTranscription.h"
#include "support/FileInFolder.h"

#include <gmock/gmock.h>

#include <functional>
#include <limits>

namespace ostrelle {

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

class OpenAIClientTest : public ModelServiceTest {
protected:
    /// A reply with a good choice and this JSON as its usage.
    static QByteArray replyWithUsage(const QByteArray& usage) {
        return withUsage(replyWithContent("\"A goal.\""), usage);
    }

    using ModelServiceTest::refusal;
    OpenAIError refusal(StandInAnswer answer) {
        return refusal(std::move(answer), [this] { ask(); });
    }
};

TEST_F(OpenAIClientTest, SendsOneRequestAndReturnsCaptionAndUsage) {
    const QByteArray jpeg = smallJpeg() + QByteArray(1'300'000, '\0');
    const CaptionReply reply = await(client.generateCaption(jpeg, captionPrompt, u"gpt-4o-mini"_s, 180, 0.2));

    ASSERT_EQ(standIn.requests().size(), 1);
    const HttpRequest& request = standIn.requests().first();
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

    EXPECT_EQ(reply.text, standInCaption(captionPrompt));
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

TEST_F(OpenAIClientTest, AKeyIsJudgedByWhetherTheServiceKnowsIt) {
    using State = KeyCheck::State;
    KeyCheck check(client, defaults);
    const auto judge = [&] {
        check.check();
        await(check.finished());
        return check.state();
    };
    EXPECT_EQ(judge(), State::accepted) << check.reason().toStdString();
    EXPECT_EQ(standIn.requests().last().method + ' ' + standIn.requests().last().path, "GET /v1/models");
    defaults.set(apiKeyName, u"sk-wrong"_s);
    EXPECT_EQ(judge(), State::refused);
    defaults.set(apiKeyName, key); // by another program
    EXPECT_EQ(check.state(), State::unknown);
    standIn.enqueue({.status = 503, .body = "busy"});
    EXPECT_EQ(judge(), State::unreachable);
    EXPECT_EQ(check.reason(), u"The service answered with HTTP 503.");
    standIn.enqueue({.status = 302, .body = {}});
    EXPECT_EQ(judge(), State::unreachable) << "the key goes nowhere else";
    defaults.set(apiKeyName, u"sk\nwrong"_s);
    EXPECT_EQ(judge(), State::unreachable) << "no header can hold it";

    defaults.set(apiKeyName, key);
    check.check();
    EXPECT_EQ(check.state(), State::checking);
    check.forget(); // cleared meanwhile
    await(check.finished());
    EXPECT_EQ(check.state(), State::unknown);
    check.hearRefusal(); // of a caption
    EXPECT_EQ(check.state(), State::refused);
    EXPECT_EQ(judge(), State::accepted);
    check.hearRefusal(); // of a request with an earlier key
    EXPECT_EQ(check.state(), State::accepted);
}

TEST_F(OpenAIClientTest, RefusesWhatCannotBeEncodedWithoutARequest) {
    const auto expectRefusal = [this](const QString& text, double temperature) {
        const auto error = failureOf<OpenAIError>(
            client.generateCaption(smallJpeg(), text, u"gpt-4o-mini"_s, 180, temperature));
        EXPECT_EQ(error.kind(), OpenAIError::Case::encoding);
        EXPECT_EQ(error.localizedDescription(), u"Failed to encode request.");
    };
    expectRefusal(captionPrompt, std::numeric_limits<double>::quiet_NaN());
    expectRefusal(captionPrompt, std::numeric_limits<double>::infinity());
    expectRefusal(captionPrompt + QChar(0xD83D), 0.2); // half of an emoji
    EXPECT_THAT(standIn.requests(), IsEmpty());
}

TEST_F(OpenAIClientTest, ReadsTheKeyAnewForEachCall) {
    defaults.set(apiKeyName, u"   "_s); // not trimmed, so not empty
    EXPECT_EQ(failureOf<OpenAIError>(start(client)).statusCode(), 401);
    EXPECT_EQ(standIn.requests().last().header("Authorization").trimmed(), "Bearer"); // Qt may trim it
    defaults.set(apiKeyName, key);
    EXPECT_NO_THROW(ask());
}

TEST_F(OpenAIClientTest, EachCallTellsOfARefusalInItsOwnLinesAndWithoutTheKey) {
    const FileInFolder note(u"A001.WAV"_s, voiceNote(u"Number 12."_s));
    const BatchImageItem image{.imageJPEGData = smallJpeg(), .filename = u"a.jpg"_s, .context = {}};
    const struct {
        QString failure;
        QString undecodable;
        std::function<void()> call;
    } rows[] = {
        {u"HTTP"_s, u"Decode failed"_s, [this] { ask(); }},
        {u"Batch HTTP"_s, u"Batch decode failed"_s,
         [&] {
             await(client.generateBatchCaptions({image, image}, captionPrompt, u"gpt-4o-mini"_s, 2000, 0.2));
         }},
        {u"Transcription HTTP"_s, u"Transcription decode failed"_s,
         [&] { await(client.transcribeAudio(note.path())); }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.failure.toStdString());
        const OpenAIError status = refusal({.status = 429, .body = "no, " + key.toUtf8()}, row.call);
        EXPECT_EQ(status.kind(), OpenAIError::Case::http);
        EXPECT_EQ(status.body(), u"no, [API key]");
        EXPECT_EQ(status.localizedDescription(), u"OpenAI HTTP 429: no, [API key]");
        EXPECT_EQ(log.lines.last(), u"[OpenAIClient] %1 429 body:\nno, [API key]"_s.arg(row.failure));
        EXPECT_THAT(log.lines.filter(key), IsEmpty());

        const OpenAIError undecodable = refusal({.body = key.toUtf8()}, row.call);
        EXPECT_EQ(undecodable.localizedDescription(),
                  u"Failed to decode OpenAI response: This is not JSON: illegal value at byte 1.");
        EXPECT_EQ(log.lines.last(), u"[OpenAIClient] %1. Body follows:\n[API key]"_s.arg(row.undecodable));
        EXPECT_THAT(log.lines.filter(key), IsEmpty());

        const OpenAIError noStatus = refusal({.status = 99}, row.call);
        EXPECT_EQ(noStatus.kind(), OpenAIError::Case::invalidResponse);
        EXPECT_EQ(noStatus.localizedDescription(), u"Invalid response from OpenAI.");

        const auto asked = standIn.requests().size();
        defaults.set(apiKeyName, key + u"\r\nX-Other: header"_s);
        EXPECT_EQ(failureIn<OpenAIError>(row.call).kind(), OpenAIError::Case::encoding);
        log.lines.clear();
        for (const QVariant& noKey : {QVariant(), QVariant(QString())}) {
            defaults.set(apiKeyName, noKey);
            const auto error = failureIn<OpenAIError>(row.call);
            EXPECT_EQ(error.kind(), OpenAIError::Case::missingAPIKey);
            EXPECT_EQ(error.localizedDescription(), u"OpenAI API key is missing.");
        }
        EXPECT_THAT(log.lines, IsEmpty());
        EXPECT_EQ(standIn.requests().size(), asked);
        defaults.set(apiKeyName, key);
    }
}

TEST_F(OpenAIClientTest, ReadsEveryFormOfContent) {
    const struct {
        const char* content;
        const char* caption; ///< null for none
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
            EXPECT_EQ(refusal({.body = replyWithContent(row.content)}).localizedDescription(),
                      u"No caption returned.");
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
    // Deeper than any reply: enough brackets to overflow the stack.
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
        EXPECT_EQ(error.statusCode(), status);
        EXPECT_EQ(error.body(), QString::fromUtf8(said));
    }
    EXPECT_EQ(standIn.requests().size(), 11) << "a redirect was followed or a request repeated";
    EXPECT_EQ(refusal({.status = 500, .body = "bad \xc3("}).localizedDescription(), u"OpenAI HTTP 500: ");
}

} // namespace ostrelle
