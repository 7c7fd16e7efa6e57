// SPDX-License-Identifier: GPL-3.0-or-later
#include "standins/ModelStandIn.h"

#include "support/Await.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QTcpSocket>

#include "standins/JpegBuilder.h"
#include "standins/SportsScene.h"
#include "standins/StandInTranscription.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QByteArray smallJpeg() {
    return jpegFile(SportsScene(8, 8, 1).image());
}

/// A request that is all right, with a placeholder for the length of its body.
QByteArray goodRequest() {
    return "POST /v1/chat/completions HTTP/1.1\r\n"
           "Host: 127.0.0.1\r\n"
           "authorization: Bearer the-key\r\n"
           "Content-Type: application/json\r\n"
           "Content-Length: LENGTH\r\n"
           "\r\n"
           R"({"model":"gpt-4o-mini","messages":[)"
           R"({"role":"system","content":[{"type":"text","text":"Return one."}]},)"
           R"({"role":"user","content":[{"type":"text","text":"Context:\n- Sport: Soccer\n"},)"
           R"({"type":"image_url","image_url":{"url":"data:image/jpeg;base64,)" +
           smallJpeg().toBase64() + R"(","detail":"low"}}]}],"temperature":0.2,"max_tokens":180})";
}

/// A request about two pictures that is all right, likewise.
QByteArray goodBatch() {
    const QByteArray image = R"({"type":"image_url","image_url":{"url":"data:image/jpeg;base64,)" +
                             smallJpeg().toBase64() + R"(","detail":"low"}},)";
    QByteArray request = goodRequest();
    request.truncate(request.indexOf("{\"model"));
    return request +
           R"({"model":"gpt-4o-mini","max_tokens":2000,"messages":[{"role":"system","content":[)"
           R"({"type":"text","text":"You are a sports caption writer. )"
           R"(Return captions in the requested JSON format."}]},{"role":"user","content":[)"
           R"({"type":"text","text":"Write."},)"
           R"({"type":"text","text":"\n\n--- IMAGE 1: a.jpg ---\nContext:\n- Event: Cup\n"},)" +
           image + R"({"type":"text","text":"\n\n--- IMAGE 2: a.jpg ---\n"},)" + image +
           R"({"type":"text","text":"\nReturn a JSON array with one caption per image. Format:\n[\n)"
           R"(  {\"image\": 1, \"caption\": \"first caption here\"},\n)"
           R"(  {\"image\": 2, \"caption\": \"second caption here\"},\n  ...\n]\n)"
           R"(Each caption should be exactly one line as specified in the instructions above."}]}]})";
}

/// A request about a note that is all right, likewise.
QByteArray goodUpload() {
    const QByteArray boundary = "Boundary-01234567-89AB-CDEF-0123-456789ABCDEF";
    return "POST /v1/audio/transcriptions HTTP/1.1\r\n"
           "Authorization: Bearer the-key\r\n"
           "Content-Type: multipart/form-data; boundary=" +
           boundary + "\r\nContent-Length: LENGTH\r\n\r\n--" + boundary +
           "\r\nContent-Disposition: form-data; name=\"file\"; filename=\"A.b.WAV\""
           "\r\nContent-Type: audio/WAV\r\n\r\n" +
           voiceNote(u"Number 12."_s) + "\r\n--" + boundary +
           "\r\nContent-Disposition: form-data; name=\"model\"\r\n\r\nwhisper-1\r\n--" + boundary + "--\r\n";
}

QByteArray withLength(QByteArray request) {
    const QByteArray length = QByteArray::number(request.size() - request.indexOf("\r\n\r\n") - 4);
    return request.replace("LENGTH", length);
}

struct Response {
    QByteArray head;
    QJsonObject json;
};

/// One connection to the stand-in.
class Visitor {
public:
    explicit Visitor(const ModelStandIn& standIn) {
        m_socket.connectToHost(standIn.url().host(), static_cast<quint16>(standIn.url().port()));
        waitUntil([this] { return m_socket.state() == QAbstractSocket::ConnectedState; });
    }

    void send(const QByteArray& bytes) {
        m_socket.write(bytes);
        waitUntil([this] { return m_socket.bytesToWrite() == 0; });
    }

    Response receive() {
        qsizetype end = 0;
        qsizetype bodySize = 0;
        waitUntil([&] {
            m_received += m_socket.readAll();
            end = m_received.indexOf("\r\n\r\n") + 4;
            const qsizetype length = m_received.indexOf("Content-Length: ") + 16;
            bodySize = m_received.mid(length, m_received.indexOf("\r", length) - length).toLongLong();
            return end > 4 && m_received.size() >= end + bodySize;
        });
        const QByteArray answer = m_received.left(end + bodySize);
        m_received.remove(0, answer.size());
        return {answer.left(end), QJsonDocument::fromJson(answer.mid(end)).object()};
    }

private:
    QTcpSocket m_socket;
    QByteArray m_received;
};

} // namespace

class ModelStandInTest : public testing::Test {
protected:
    struct Refusal {
        QByteArray before; ///< in the good request
        QByteArray after;
        int status;
        const char* parameter; ///< empty: null
    };

    void expectRefusals(const QByteArray& good, const QList<Refusal>& rows) {
        for (const Refusal& row : rows) {
            SCOPED_TRACE((row.before.left(40) + " -> " + row.after.left(40)).constData());
            QByteArray request = good;
            const qsizetype place = request.indexOf(row.before);
            ASSERT_GE(place, 0);
            Visitor visitor(standIn);
            visitor.send(withLength(request.replace(place, row.before.size(), row.after)));
            const Response response = visitor.receive();
            EXPECT_EQ(response.head.mid(9, 3).toInt(), row.status);
            const QJsonObject error = response.json[u"error"].toObject();
            EXPECT_FALSE(error[u"message"].toString().isEmpty());
            EXPECT_EQ(error[u"param"].toString().toStdString(), row.parameter);
        }
    }

    ModelStandIn standIn{"the-key"};
};

TEST_F(ModelStandInTest, AnswersInTheFormOfTheService) {
    Visitor visitor(standIn);
    const QByteArray twice = withLength(goodRequest()) + withLength(goodRequest());
    visitor.send(twice.left(30)); // in the middle of a header
    visitor.send(twice.mid(30));
    for (int number = 1; number <= 2; ++number) {
        const Response response = visitor.receive();
        EXPECT_TRUE(response.head.startsWith("HTTP/1.1 200 "));
        EXPECT_TRUE(response.head.contains("\r\nServer: ostrelle-model-stand-in\r\n"));
        EXPECT_EQ(response.json[u"model"].toString(), u"gpt-4o-mini");
        EXPECT_EQ(response.json[u"id"].toString(), u"chatcmpl-standin-"_s + QString::number(number));
        EXPECT_GT(response.json[u"created"].toInteger(), 1'700'000'000);
        const QJsonObject usage = response.json[u"usage"].toObject();
        EXPECT_EQ(usage[u"prompt_tokens"].toInteger(), 3 + 7 + 2833);
        EXPECT_EQ(usage[u"total_tokens"].toInteger(), 2843 + usage[u"completion_tokens"].toInteger());
        EXPECT_EQ(response.json[u"choices"][0][u"message"][u"content"].toString(),
                  u"Soccer. (caption by the stand-in model, which sees no picture)");
    }
}

TEST_F(ModelStandInTest, RefusesWhatTheServiceWouldRefuse) {
    const QByteArray base64 = smallJpeg().toBase64();
    expectRefusals(
        goodRequest(),
        {
            {"POST", "GET", 405, ""},
            {"/v1/chat/completions", "/v1/completions", 404, ""},
            {"HTTP/1.1", "HTTP/1.0", 400, ""},
            {"authorization: Bearer the-key\r\n", "", 401, ""},
            {"Bearer the-key", "Bearer another", 401, ""},
            {"application/json", "text/plain", 400, ""},
            {"Host: 127.0.0.1", "Host 127.0.0.1", 400, ""},
            {"LENGTH", "many", 411, ""},
            {"LENGTH", "-1", 411, ""},
            {"LENGTH", "99999999999", 413, ""},
            {"Content-Length: LENGTH", "Transfer-Encoding: chunked", 411, ""},
            {"Host: ", "Host: " + QByteArray(20'000, 'x'), 431, ""},
            {R"({"model")", R"("model")", 400, ""},
            {R"("model":"gpt-4o-mini",)", "", 400, "model"},
            {R"("gpt-4o-mini")", "4", 400, "model"},
            {R"("temperature":0.2)", R"("top_k":1)", 400, "top_k"},
            {R"("temperature":0.2)", R"("temperature":"0.2")", 400, "temperature"},
            {R"("temperature":0.2)", R"("temperature":2.5)", 400, "temperature"},
            {R"("max_tokens":180)", R"("max_tokens":180.5)", 400, "max_tokens"},
            {R"("max_tokens":180)", R"("max_tokens":0)", 400, "max_tokens"},
            {R"("messages":[)", R"("messages":[1,)", 400, "messages"},
            {R"("role":"system")", R"("role":"user")", 400, "messages[0].role"},
            {R"([{"type":"text","text":"Return one."}])", R"("Return one.")", 400, "messages[0].content"},
            {R"("text":"Return one.")", R"("text":7)", 400, "messages[0].content[0].text"},
            {R"({"type":"text","text":"Context)", R"({"text":"Context)", 400, "messages[1].content[0].type"},
            {R"("type":"image_url",)", R"("type":"image_url","alt":"",)", 400, "messages[1].content[1].alt"},
            {R"("detail":"low")", R"("detail":"tiny")", 400, "messages[1].content[1].image_url.detail"},
            {"image/jpeg", "image/png", 400, "messages[1].content[1].image_url.url"},
            {base64, "%" + base64.mid(1), 400, "messages[1].content[1].image_url.url"},
            {base64, QByteArray("GIF89a, honestly").toBase64(), 400, "messages[1].content[1].image_url.url"},
        });
}

TEST_F(ModelStandInTest, RefusesABatchOfAnotherLayout) {
    const QByteArray base64 = smallJpeg().toBase64();
    expectRefusals(goodBatch(),
                   {{"You are a", "Be a", 400, "messages[0].content[0].text"},
                    {R"({"type":"text","text":"Write."},)", "", 400, "messages[1].content"},
                    {R"("text":"Write.")", R"("text":0)", 400, "messages[1].content[0].text"},
                    {"IMAGE 1", "IMAGE 0", 400, "messages[1].content[1]"},
                    {"IMAGE 2", "IMAGE 1", 400, "messages[1].content[3]"},
                    {"\\n\\n--- IMAGE 2", "\\n--- IMAGE 2", 400, "messages[1].content[3]"},
                    {"1: a.jpg ---\\n", "1: a.jpg\\n", 400, "messages[1].content[1]"},
                    {"2: a.jpg ---\\n", "2:", 400, "messages[1].content[3]"},
                    {R"("low")", R"("high")", 400, "messages[1].content[2].image_url.detail"},
                    {base64, QByteArray("GIF89a").toBase64(), 400, "messages[1].content[2].image_url.url"},
                    {"  ...", " ...", 400, "messages[1].content[5]"},
                    {R"("max_tokens":2000,)", "", 400, "max_tokens"}});
}

TEST_F(ModelStandInTest, RefusesAnUploadThatTheServiceWouldRefuse) {
    expectRefusals(goodUpload(), {{"Bearer the-key", "Bearer another", 401, ""},
                                  {"multipart/form-data", "multipart/mixed", 400, ""},
                                  {"boundary=Boundary-01", "boundary=Boundary-02", 400, ""},
                                  {"boundary=Boundary-0", "boundary=0", 400, ""},
                                  {"\r\n--Boundary", "\n--Boundary", 400, ""},
                                  {"audio/WAV", "audio/wav", 400, ""},
                                  {"whisper-1", "whisper-2", 400, ""},
                                  {"EF--\r\n", "EF\r\n", 400, ""},
                                  {"RIFF", "riff", 400, "file"},
                                  {"A.b.WAV\"\r\nContent-Type: audio/WAV",
                                   "A.aiff\"\r\nContent-Type: audio/aiff", 400, "file"}});
}

TEST_F(ModelStandInTest, CaptionsABatchImageByImage) {
    Visitor visitor(standIn);
    visitor.send(withLength(goodBatch()));
    const Response response = visitor.receive();
    EXPECT_EQ(response.json[u"usage"][u"prompt_tokens"].toInteger(), 20 + 2 + 6 + 2 * 2833);
    const QString text = response.json[u"choices"][0][u"message"][u"content"].toString();
    EXPECT_EQ(
        QJsonDocument::fromJson(text.toUtf8()).array(),
        (QJsonArray{
            QJsonObject{{u"image"_s, 1},
                        {u"caption"_s, u"Sports during Cup. Picture a.jpg. (caption by the stand-in model, "
                                       "which sees no picture)"_s}},
            QJsonObject{{u"image"_s, 2},
                        {u"caption"_s, u"Sports. Picture a.jpg. (caption by the stand-in model, which "
                                       "sees no picture)"_s}}}));
}

TEST_F(ModelStandInTest, FailsAsOftenAsItIsToldTo) {
    standIn.failEvery(3, 429);
    standIn.setKeepsBodies(false);
    Visitor visitor(standIn);
    QList<int> statuses;
    for (int number = 1; number <= 7; ++number) {
        visitor.send(withLength(number % 2 == 0 ? goodUpload() : goodRequest()));
        statuses.append(visitor.receive().head.mid(9, 3).toInt());
    }
    EXPECT_EQ(statuses, (QList{200, 200, 429, 200, 200, 429, 200}));
    EXPECT_TRUE(standIn.requests().last().body.isEmpty());
}

TEST_F(ModelStandInTest, TakesItsTimeForEachAnswerInTurn) {
    standIn.setDelay(std::chrono::milliseconds(1));
    Visitor visitor(standIn);
    visitor.send(withLength(goodUpload()) + withLength(goodRequest()));
    EXPECT_EQ(visitor.receive().json[u"text"].toString(), u"Number 12.");
    EXPECT_TRUE(visitor.receive().json.contains(u"choices"));
}

TEST(StandInCaptionTest, RepeatsTheFactsOfThePromptOnOneLine) {
    const QString label = u"(caption by the stand-in model, which sees no picture)"_s;
    const QString rules = u"\nRules:\n- Event: always name it\n- Rights: copy them\n"_s;
    EXPECT_EQ(standInCaption(u"Context:\n- Event: Harbor Classic\n- Venue: Pier Field\n- Place: Tampa, FL\n"
                             "- Date: 2025-10-26T19:00:00Z\n- Rights: Photo by T. Vasquel\n- Sport: Soccer\n"
                             "- DateText: Sunday, Oct. 26, 2025\n"_s +
                             rules + u"Existing caption (may be minimal): Kick\r\n  off"_s),
              u"Soccer during Harbor Classic at Pier Field in Tampa, FL on Sunday, Oct. 26, 2025. Kick off. "
              "Photo by T. Vasquel "_s +
                  label);
    EXPECT_EQ(standInCaption(u"Context:\n- Date: 2025\n"_s + rules +
                             u"Existing caption (may be minimal): No caption"_s),
              u"Sports on 2025. "_s + label);
    EXPECT_EQ(standInCaption(rules), u"Sports. "_s + label);
}

} // namespace ostrelle
