// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/FileError.h"
#include "services/ModelServiceFixture.h"
#include "services/TranscriptionRequest.h"
#include "standins/StandInTranscription.h"
#include "support/FileInFolder.h"

#include <gmock/gmock.h>

#include <QFile>
#include <cerrno>

namespace ostrelle {

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

class TranscriptionTest : public ModelServiceTest {
protected:
    /// The error with which the service refuses the file.
    OpenAIError refusalOf(const FileInFolder& file) {
        return failureOf<OpenAIError>(client.transcribeAudio(file.path()));
    }

    const FileInFolder note{u"A001.WAV"_s, voiceNote(u"Number 12, Abel."_s)};
};

TEST_F(TranscriptionTest, SendsTheFileAndReturnsItsWords) {
    // The stand-in accepts one form only, byte for byte.
    EXPECT_EQ(await(client.transcribeAudio(note.path())), u"Number 12, Abel.");
    EXPECT_THAT(log.lines, ElementsAre(u"[OpenAIClient] Audio file: A001.WAV, size: 36 bytes"_s,
                                       u"[OpenAIClient] Transcription: Number 12, Abel."_s));

    await(client.transcribeAudio(note.path()));
    EXPECT_NE(standIn.requests().last().header("Content-Type"),
              standIn.requests().first().header("Content-Type"));
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
        EXPECT_EQ(await(client.transcribeAudio(note.path())), text);
        EXPECT_EQ(log.lines.last(), u"[OpenAIClient] Transcription: "_s + text);
    }
}

TEST_F(TranscriptionTest, LeavesTheKindsOfFilesToTheService) {
    for (const QString& name : {u"A001.aiff"_s, u"A001"_s}) {
        const OpenAIError error = refusalOf({name, "FORM"});
        EXPECT_EQ(error.statusCode(), 400);
        EXPECT_TRUE(error.localizedDescription().contains(u"Invalid file format. Supported formats: "));
    }
    EXPECT_EQ(refusalOf({u"A.wav"_s, ""}).statusCode(), 400);
}

TEST_F(TranscriptionTest, TellsWhichReplyIsNoTranscription) {
    standIn.enqueue({.body = R"({"words":"a"})"});
    EXPECT_EQ(refusalOf(note).localizedDescription(),
              u"Failed to decode OpenAI response: The field \"text\" is missing.");
}

TEST_F(TranscriptionTest, AsksNothingWithoutAKeyOrAboutTooLargeAFile) {
    ASSERT_TRUE(QFile(note.path()).resize(largestAudioFile + 1)); // sparse
    EXPECT_EQ(failureOf<FileError>(client.transcribeAudio(note.path())).code(), EFBIG);
    log.lines.clear();
    defaults.remove(apiKeyName);
    EXPECT_EQ(failureOf<OpenAIError>(client.transcribeAudio(u"none.wav"_s)).kind(),
              OpenAIError::Case::missingAPIKey);
    EXPECT_THAT(log.lines, IsEmpty());
    EXPECT_THAT(standIn.requests(), IsEmpty());
}

} // namespace ostrelle
