// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/FileError.h"
#include "services/ModelServiceFixture.h"
#include "services/TranscriptionRequest.h"
#include "services/TransportError.h"

#include <gmock/gmock.h>

#include <QFile>
#include <QTemporaryDir>
#include <cerrno>

#include "standins/StandInTranscription.h"

namespace ostrelle {

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

class TranscriptionTest : public ModelServiceTest {
protected:
    QString write(const QString& name, const QByteArray& bytes) const {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        return file.fileName();
    }
    QString note() const { return write(u"A001.WAV"_s, voiceNote(u"Number 12, Abel."_s)); }
    OpenAIError refusal(StandInAnswer answer) {
        log.lines.clear();
        standIn.enqueue(std::move(answer));
        return failureOf<OpenAIError>(client.transcribeAudio(note()));
    }

    QTemporaryDir folder;
};

TEST_F(TranscriptionTest, SendsTheFileAndReturnsItsWords) {
    EXPECT_EQ(await(client.transcribeAudio(note())), u"Number 12, Abel.");

    const HttpRequest request = standIn.requests().last();
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, "/v1/audio/transcriptions");
    EXPECT_EQ(request.header("Authorization"), "Bearer " + key.toUtf8());
    QByteArray boundary = request.header("Content-Type");
    boundary.replace("multipart/form-data; boundary=", "");
    EXPECT_EQ(request.body.toStdString(),
              QByteArray("--BOUNDARY\r\n"
                         "Content-Disposition: form-data; name=\"file\"; filename=\"A001.WAV\"\r\n"
                         "Content-Type: audio/WAV\r\n\r\n" +
                         voiceNote(u"Number 12, Abel."_s) +
                         "\r\n"
                         "--BOUNDARY\r\n"
                         "Content-Disposition: form-data; name=\"model\"\r\n\r\n"
                         "whisper-1\r\n"
                         "--BOUNDARY--\r\n")
                  .replace("BOUNDARY", boundary)
                  .toStdString());
    EXPECT_THAT(log.lines, ElementsAre(u"[OpenAIClient] Audio file: A001.WAV, size: 36 bytes"_s,
                                       u"[OpenAIClient] Transcription: Number 12, Abel."_s));

    await(client.transcribeAudio(note()));
    EXPECT_NE(standIn.requests().last().header("Content-Type"), request.header("Content-Type"));
}

TEST(TranscriptionFormTest, NamesTheFileAndItsKind) {
    const struct {
        QString file;
        QByteArray name;
        QByteArray kind;
    } rows[] = {
        {u"A001.WAV"_s, "A001.WAV", "WAV"},
        {u"A \"quoted\" note.m4a"_s, "A \"quoted\" note.m4a", "m4a"},
        {u"Tor für Köln.final.mp3"_s, "Tor für Köln.final.mp3", "mp3"},
        {u"A001"_s, "A001", ""},
        {u"A001."_s, "A001.", ""},
        {u".wav"_s, ".wav", ""},
        {u"a\r\nX-Other: b\n\n.w\0av"_s, "a__X-Other: b__.w_av", "w_av"},
    };
    for (const auto& row : rows) {
        const QByteArray form = transcriptionForm("sound\r\n", row.file, "B");
        EXPECT_TRUE(form.startsWith("--B\r\nContent-Disposition: form-data; name=\"file\"; filename=\"" +
                                    row.name + "\"\r\nContent-Type: audio/" + row.kind +
                                    "\r\n\r\nsound\r\n\r\n--B\r\n"))
            << form.toStdString();
    }
}

TEST_F(TranscriptionTest, ReturnsTheWordsAsTheyAre) {
    for (const QString& text : {u""_s, u" \n“Ü” goal \n"_s}) {
        const QJsonObject said{{u"text"_s, text}, {u"language"_s, u"de"_s}};
        standIn.enqueue({.body = QJsonDocument(said).toJson()});
        EXPECT_EQ(await(client.transcribeAudio(note())), text);
        EXPECT_EQ(log.lines.last(), u"[OpenAIClient] Transcription: "_s + text);
    }
}

TEST_F(TranscriptionTest, LeavesTheKindsOfFilesToTheService) {
    for (const QString& name : {u"A001.aiff"_s, u"A001"_s}) {
        const auto error = failureOf<OpenAIError>(client.transcribeAudio(write(name, "FORM")));
        EXPECT_EQ(error.statusCode(), 400);
        EXPECT_TRUE(error.localizedDescription().contains(u"Invalid file format. Supported formats: "));
        EXPECT_EQ(log.lines.last(), u"[OpenAIClient] Transcription HTTP 400 body:\n"_s + error.body());
    }
    EXPECT_EQ(failureOf<OpenAIError>(client.transcribeAudio(write(u"A.wav"_s, ""))).statusCode(), 400);
}

TEST_F(TranscriptionTest, TellsWhichReplyIsNoTranscription) {
    const struct {
        QByteArray body;
        QString words;
        QString shown;
    } rows[] = {
        {"{}", u"The field \"text\" is missing."_s, u"{}"_s},
        {R"({"text":["a"]})", u"The field \"text\" is not a text."_s, uR"({"text":["a"]})"_s},
        {"\xff" + key.toUtf8(), u"This is not JSON: illegal value at byte 1."_s, u"<non-utf8 body>"_s},
        {key.toUtf8(), u"This is not JSON: illegal value at byte 1."_s, u"[API key]"_s},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(refusal({.body = row.body}).localizedDescription(),
                  u"Failed to decode OpenAI response: "_s + row.words);
        EXPECT_EQ(log.lines.last(),
                  u"[OpenAIClient] Transcription decode failed. Body follows:\n"_s + row.shown);
    }
    EXPECT_EQ(refusal({.status = 99}).kind(), OpenAIError::Case::invalidResponse);
}

TEST_F(TranscriptionTest, AsksNothingWithoutAFileOrAKey) {
    const auto codeOf = [this](const QString& file) {
        return failureOf<FileError>(client.transcribeAudio(file)).code();
    };
    EXPECT_EQ(codeOf(folder.filePath(u"none.wav"_s)), ENOENT);
    EXPECT_EQ(codeOf(folder.path()), EISDIR);
    EXPECT_EQ(codeOf(u"/dev/zero"_s), EINVAL);
    QFile huge(folder.filePath(u"huge.wav"_s)); // a sparse one
    ASSERT_TRUE(huge.open(QIODevice::WriteOnly) && huge.resize(largestAudioFile + 1));
    EXPECT_EQ(codeOf(huge.fileName()), EFBIG);

    defaults.set(apiKeyName, key + u"\nX-Other: header"_s);
    EXPECT_EQ(failureOf<OpenAIError>(client.transcribeAudio(note())).kind(), OpenAIError::Case::encoding);
    log.lines.clear();
    defaults.remove(apiKeyName);
    EXPECT_EQ(failureOf<OpenAIError>(client.transcribeAudio(u"none.wav"_s)).kind(),
              OpenAIError::Case::missingAPIKey);
    EXPECT_THAT(log.lines, IsEmpty());
    EXPECT_THAT(standIn.requests(), IsEmpty());
}

TEST_F(TranscriptionTest, FailsWhatIsBeingReadWhenTheClientIsDestroyed) {
    auto dying = std::make_unique<OpenAIClient>(standIn.url(), defaults, log, clock);
    auto busy = std::make_unique<BusyWorkers>();
    QCoro::Task<QString> task = dying->transcribeAudio(note());
    dying.reset();
    busy.reset();
    EXPECT_EQ(failureOf<TransportError>(std::move(task)).code(), QNetworkReply::OperationCanceledError);
    EXPECT_THAT(log.lines, IsEmpty());
}

} // namespace ostrelle
