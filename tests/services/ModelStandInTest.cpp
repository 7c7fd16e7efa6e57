// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/ModelServiceFixture.h"
#include "standins/StandInTranscription.h"
#include "support/FileInFolder.h"

#include <QTcpSocket>

namespace ostrelle {

using namespace Qt::StringLiterals;

/// The stand-in's answers to the client's own requests, and to copies of them with one fault.
class ModelStandInTest : public ModelServiceTest {
protected:
    struct Response {
        QByteArray bytes;
        QJsonObject json;
    };

    /// The last request as sent, with a placeholder for the length of its body.
    QByteArray lastRequest() const {
        const HttpRequest& request = standIn.requests().last();
        QByteArray bytes = request.method + ' ' + request.path + " HTTP/1.1\r\n";
        for (const auto& [name, value] : request.headers) {
            bytes += name + ": " + (name.toLower() == "content-length" ? "LENGTH" : value) + "\r\n";
        }
        return bytes + "\r\n" + request.body;
    }

    Response answerTo(QByteArray request) const {
        const QByteArray length = QByteArray::number(request.size() - request.indexOf("\r\n\r\n") - 4);
        QTcpSocket socket;
        socket.connectToHost(standIn.url().host(), static_cast<quint16>(standIn.url().port()));
        socket.write(request.replace("LENGTH", length));
        Response response;
        waitUntil([&] {
            response.bytes += socket.readAll();
            const QByteArray body = response.bytes.mid(response.bytes.indexOf("\r\n\r\n") + 4);
            response.json = QJsonDocument::fromJson(body).object();
            return !response.json.isEmpty();
        });
        return response;
    }
};

TEST_F(ModelStandInTest, RefusesWhatTheServiceWouldRefuse) {
    ask();
    const QByteArray caption = lastRequest();
    const BatchImageItem image{.imageJPEGData = smallJpeg(), .filename = u"a.jpg"_s, .context = {}};
    await(client.generateBatchCaptions({image, image}, u"Write."_s, u"gpt-4o-mini"_s, 2000, 0.2));
    const QByteArray batch = lastRequest();
    const FileInFolder note(u"A.b.WAV"_s, voiceNote(u"Number 12."_s));
    await(client.transcribeAudio(note.path()));
    const QByteArray upload = lastRequest();
    const QByteArray base64 = smallJpeg().toBase64();
    const struct {
        const QByteArray& good;
        QByteArray before; ///< in the good request
        QByteArray after;
        int status = 400;
        const char* parameter = ""; ///< empty for null
    } rows[] = {
        {caption, "POST", "GET", 405},
        {caption, "/v1/chat/", "/v1/", 404},
        {caption, "HTTP/1.1", "HTTP/1.0"},
        {caption, "Bearer ", "Bearer x", 401},
        {caption, "application/json", "text/plain"},
        {caption, "LENGTH", "-1", 411},
        {caption, "LENGTH", "99999999999", 413},
        {caption, R"({"max)", R"("max)"},
        {caption, R"("model":"gpt-4o-mini",)", "", 400, "model"},
        {caption, R"("gpt-4o-mini")", "4", 400, "model"},
        {caption, R"("temperature":0.2)", R"("top_k":1)", 400, "top_k"},
        {caption, R"("temperature":0.2)", R"("temperature":2.5)", 400, "temperature"},
        {caption, R"("max_tokens":180)", R"("max_tokens":180.5)", 400, "max_tokens"},
        {caption, R"("messages":[)", R"("messages":[1,)", 400, "messages"},
        {caption, R"("role":"system")", R"("role":"user")", 400, "messages[0].role"},
        {caption, R"("low")", R"("tiny")", 400, "messages[1].content[1].image_url.detail"},
        {caption, "image/jpeg", "image/png", 400, "messages[1].content[1].image_url.url"},
        {caption, base64, '%' + base64.mid(1), 400, "messages[1].content[1].image_url.url"},
        {caption, base64, "R0lGODlh", 400, "messages[1].content[1].image_url.url"},
        {batch, "You are a", "Be a", 400, "messages[0].content[0].text"},
        {batch, "IMAGE 2", "IMAGE 1", 400, "messages[1].content[3]"},
        {batch, "1: a.jpg ---", "1: a.jpg", 400, "messages[1].content[1]"},
        {batch, R"("low")", R"("high")", 400, "messages[1].content[2].image_url.detail"},
        {batch, "  ...", " ...", 400, "messages[1].content[5]"},
        {batch, R"("max_tokens":2000,)", "", 400, "max_tokens"},
        {upload, "multipart/form-data", "multipart/mixed"},
        {upload, "\r\n--Boundary", "\n--Boundary"},
        {upload, "audio/WAV", "audio/wav"},
        {upload, "whisper-1", "whisper-2"},
        {upload, "RIFF", "riff", 400, "file"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE((row.before.left(40) + " -> " + row.after.left(40)).constData());
        QByteArray request = row.good;
        const qsizetype place = request.indexOf(row.before);
        ASSERT_GE(place, 0);
        const Response response = answerTo(request.replace(place, row.before.size(), row.after));
        EXPECT_EQ(response.bytes.mid(9, 3).toInt(), row.status);
        const QJsonObject error = response.json[u"error"].toObject();
        EXPECT_FALSE(error[u"message"].toString().isEmpty());
        EXPECT_EQ(error[u"param"].toString().toStdString(), row.parameter);
    }
}

TEST_F(ModelStandInTest, FailsAsOftenAsItIsToldTo) {
    standIn.failEvery(3, 429);
    standIn.setKeepsBodies(false);
    QList<int> failures;
    for (int number = 1; number <= 7; ++number) {
        try {
            ask();
        } catch (const OpenAIError& error) {
            failures.append({number, error.statusCode()});
        }
    }
    EXPECT_EQ(failures, (QList{3, 429, 6, 429}));
    EXPECT_TRUE(standIn.requests().last().body.isEmpty());
}

TEST(StandInCaptionTest, RepeatsTheFactsOfThePromptOnOneLine) {
    const QString label = u"(caption by the stand-in model, which sees no picture)"_s;
    const QString rules = u"\nRules:\n- Event: always name it\n- Rights: copy them\n"_s;
    EXPECT_EQ(standInCaption(u"Context:\n- Event: Harbor Classic\n- Venue: Pier Field\n- Place: Tampa, FL\n"
                             "- Date: 2025-10-26T19:00:00Z\n- Rights: Photo by T. Vasquel\n- Sport: Soccer\n"
                             "- DateText: Sunday, Oct. 26, 2025\n"_s +
                                 rules + u"Existing caption (may be minimal): Kick\r\n  off"_s,
                             u"a.jpg"_s),
              u"Soccer during Harbor Classic at Pier Field in Tampa, FL on Sunday, Oct. 26, 2025. Kick off. "
              "Picture a.jpg. Photo by T. Vasquel "_s +
                  label);
    EXPECT_EQ(standInCaption(rules), u"Sports. "_s + label);
}

} // namespace ostrelle
