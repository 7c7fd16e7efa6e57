// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/AudioNote.h"

#include "pipeline/PipelineFixture.h"
#include "standins/StandInTranscription.h"

#include <QFileInfo>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

class AudioNoteTest : public PipelineTest {
protected:
    QCoro::Task<std::optional<QString>> transcribed(const QString& image) {
        const AudioWeight weight =
            settings.prioritizeAudioFiles() ? AudioWeight::priority : AudioWeight::context;
        return transcribeAudioNote(program.openAI, log, threads.of(folder.path()), weight,
                                   QFileInfo(image).fileName(), audioNotesOf(image));
    }
};

} // namespace

TEST_F(AudioNoteTest, NotesAreFoundByTheImagesNameInTheirOrder) {
    const struct {
        QStringList files;
        QStringList notes;
    } rows[] = {
        {{}, {}},
        {{u"a.flac"_s, u"a.aiff"_s, u"a.aac"_s, u"a.m4a"_s, u"a.mp3"_s, u"a.wav"_s},
         {u"a.wav"_s, u"a.mp3"_s, u"a.m4a"_s, u"a.aac"_s, u"a.aiff"_s, u"a.flac"_s}},
        {{u"a.MP3"_s, u"a.WAV"_s, u"a.mp3"_s}, {u"a.WAV"_s, u"a.mp3"_s, u"a.MP3"_s}},
        {{u"b.wav"_s, u"a.JPG.wav"_s, u"A.wav"_s, u"a.ogg"_s}, {}},
    };
    for (const auto& row : rows) {
        const QString place = u"with "_s + row.files.join(u' ');
        SCOPED_TRACE(place.toStdString());
        folderWith(place);
        for (const QString& name : row.files) {
            write(place + u'/' + name, "x");
        }
        QStringList found;
        for (const QString& note : audioNotesOf(path(place + u"/a.JPG"_s))) {
            found.append(QFileInfo(note).fileName());
        }
        EXPECT_EQ(found, row.notes);
    }
    folderWith(u"a.wav"_s);
    EXPECT_EQ(audioNotesOf(path(u"a.JPG"_s)), QStringList()) << "a folder is not a note";
}

TEST_F(AudioNoteTest, TheFirstNoteThatCanBeTranscribedCounts) {
    const struct {
        const char* what;
        QList<std::pair<QString, QByteArray>> files;
        std::optional<QString> words;
        QStringList lines;
    } rows[] = {
        {"none", {}, std::nullopt, {}},
        {"the first",
         {{u"a.wav"_s, voiceNote(u"Great catch"_s)}, {u"a.mp3"_s, "x"}},
         u"Great catch"_s,
         {u"Found audio file: a.wav"_s, u"Audio transcription (CONTEXT): Great catch"_s}},
        {"the next one after a failure",
         {{u"a.wav"_s, "no sound"}, {u"a.mp3"_s, "x"}, {u"a.m4a"_s, "x"}},
         u"Voice note a.mp3"_s,
         {u"Found audio file: a.wav"_s, u"Failed to transcribe audio for a.JPG: OpenAI HTTP 400: "_s,
          u"Found audio file: a.mp3"_s, u"Audio transcription (CONTEXT): Voice note a.mp3"_s}},
        {"an empty file and a kind that the model does not know",
         {{u"a.m4a"_s, ""}, {u"a.aiff"_s, "x"}},
         std::nullopt,
         {u"Found audio file: a.m4a"_s, u"Failed to transcribe audio for a.JPG: "_s,
          u"Found audio file: a.aiff"_s, u"Failed to transcribe audio for a.JPG: "_s}},
        {"silence, which ends the search",
         {{u"a.wav"_s, voiceNote(u" \n"_s)}, {u"a.mp3"_s, "x"}},
         std::nullopt,
         {u"Found audio file: a.wav"_s, u"Audio transcription (CONTEXT): "_s}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        QFile::remove(log.path());
        const QString place = QString::fromUtf8(row.what);
        folderWith(place);
        for (const auto& [name, bytes] : row.files) {
            write(place + u'/' + name, bytes);
        }
        EXPECT_EQ(await(transcribed(path(place + u"/a.JPG"_s))), row.words);
        expectLogged(row.lines);
    }
}

TEST_F(AudioNoteTest, ThePromptTellsTheModelWhatWasSaid) {
    settings.setPrioritizeAudioFiles(true);
    const QString line = u"\n- Audio Note: Number 12 caught it\n"_s;
    write(u"IMG_1.WAV"_s, voiceNote(u"Number 12 caught it"_s));
    const QString image = rawImage();
    EXPECT_TRUE(run(image));
    EXPECT_TRUE(hasLogged(u"[Analyzer] Audio transcription (PRIORITY): Number 12 caught it"_s));
    ASSERT_EQ(model.requests().size(), 2);
    EXPECT_TRUE(model.requests()[0].body.contains("filename=\"IMG_1.WAV\""));
    EXPECT_TRUE(texts().value(0).contains(line));

    drive(captionBatch({image, jpegImage(u"IMG_2.JPG"_s)}));
    EXPECT_TRUE(texts().value(1).contains(line));
    EXPECT_FALSE(texts().value(2).contains(u"Audio Note"_s)) << "the note belongs to the other image";
}

} // namespace ostrelle
