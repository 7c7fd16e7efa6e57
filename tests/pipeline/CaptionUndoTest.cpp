// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/CaptionUndo.h"

#include "pipeline/PipelineFixture.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

using Kind = UndoOutcome::Kind;

class CaptionUndoTest : public PipelineTest {
protected:
    UndoOutcome undo(const QString& file) { return await(CaptionUndo(program.analyzerParts()).undo(file)); }
};

} // namespace

TEST_F(CaptionUndoTest, TheCaptionBeforeComesBackAndTheImageCountsAsDone) {
    settings.setAlwaysOverwriteCaptions(true);
    const QString image = rawImage();
    sidecar("By hand.");
    ASSERT_TRUE(run(image));
    ASSERT_NE(caption(), u"By hand."_s);
    EXPECT_EQ(undo(image).kind, Kind::undone);
    EXPECT_EQ(caption(), u"By hand."_s);
    EXPECT_TRUE(await(manifest.isProcessed(image)));
    EXPECT_EQ(undo(image).kind, Kind::left); // only once
}

TEST_F(CaptionUndoTest, AnImageWithoutACaptionHasNoneAgain) {
    for (const QString& image : {rawImage(), jpegImage(u"b.jpg"_s)}) {
        SCOPED_TRACE(image.toStdString());
        ASSERT_TRUE(run(image));
        ASSERT_FALSE(captionOf(image).value_or(QString()).isEmpty());
        const UndoOutcome outcome = undo(image);
        EXPECT_EQ(outcome.kind, Kind::undone) << outcome.reason.toStdString();
        EXPECT_EQ(captionOf(image).value_or(QString()), QString());
        EXPECT_TRUE(QFile::exists(image));
    }
    EXPECT_TRUE(QFile::exists(path(u"IMG_1.xmp"_s))); // nothing is deleted
}

TEST_F(CaptionUndoTest, ACaptionThatSomebodyHasChangedSinceStays) {
    const QString image = rawImage();
    ASSERT_TRUE(run(image));
    sidecar("Better words.");
    const UndoOutcome outcome = undo(image);
    EXPECT_EQ(outcome.kind, Kind::left);
    EXPECT_EQ(outcome.reason, u"Its caption has been changed since."_s);
    EXPECT_EQ(caption(), u"Better words."_s);
}

TEST_F(CaptionUndoTest, TextThatSomebodyHasChangedInAnotherFieldStays) {
    settings.setAlwaysOverwriteCaptions(true);
    const QString image = rawImage();
    sidecar("By hand.");
    ASSERT_TRUE(run(image));
    QByteArray edited = read(u"IMG_1.xmp"_s);
    const qsizetype english = edited.indexOf("\"en-US\">") + 8;
    edited.replace(english, edited.indexOf('<', english) - english, "Better words.");
    write(u"IMG_1.xmp"_s, edited);
    EXPECT_EQ(undo(image).kind, Kind::left);
    EXPECT_EQ(read(u"IMG_1.xmp"_s), edited);
}

TEST_F(CaptionUndoTest, EachUndoGoesBackByOneCaption) {
    settings.setAlwaysOverwriteCaptions(true);
    const QString image = rawImage();
    sidecar("By hand.");
    model.enqueue(reply(u"First words."_s));
    ASSERT_TRUE(run(image));
    model.enqueue(reply(u"Second words."_s));
    clock.advance(std::chrono::minutes(1));
    ASSERT_TRUE(run(image));
    EXPECT_EQ(caption(), u"Second words."_s);
    EXPECT_EQ(undo(image).kind, Kind::undone);
    EXPECT_EQ(caption(), u"First words."_s);
    EXPECT_EQ(undo(image).kind, Kind::undone);
    EXPECT_EQ(caption(), u"By hand."_s);
    EXPECT_EQ(undo(image).kind, Kind::left);
}

TEST_F(CaptionUndoTest, ARenamedImageIsFoundAndACopyIsNot) {
    const QString image = jpegImage(u"a.jpg"_s);
    ASSERT_TRUE(run(image));
    ASSERT_TRUE(QFile::copy(image, path(u"copy.jpg"_s)));
    EXPECT_EQ(undo(path(u"copy.jpg"_s)).kind, Kind::unknown);
    ASSERT_TRUE(QFile::rename(image, path(u"game_0001.jpg"_s)));
    EXPECT_EQ(undo(path(u"copy.jpg"_s)).kind, Kind::unknown);
    EXPECT_EQ(undo(path(u"game_0001.jpg"_s)).kind, Kind::undone);
}

TEST_F(CaptionUndoTest, AWriteThatAKillCutOffIsSettledByALookAtTheFile) {
    const QString image = rawImage();
    sidecar("By hand.");
    JournalEntry entry;
    entry.file = image;
    entry.before = u"By hand."_s;
    entry.after = u"Ours."_s;
    await(program.journal.begin(entry));
    EXPECT_EQ(undo(image).kind, Kind::undone); // the file was not written
    EXPECT_EQ(caption(), u"By hand."_s);

    await(program.journal.begin(entry));
    sidecar("Ours.");
    EXPECT_EQ(undo(image).kind, Kind::undone); // the file was written
    EXPECT_EQ(caption(), u"By hand."_s);
}

TEST_F(CaptionUndoTest, ARunOverAFolderIsTakenBackAsAWhole) {
    const QStringList images = {jpegImage(u"a.jpg"_s), jpegImage(u"b.jpg"_s)};
    ASSERT_TRUE(run(jpegImage(u"first.jpg"_s)));
    program.journal.beginRun();
    drive(captionBatch(images));
    CaptionUndo undoing(program.analyzerParts());
    EXPECT_EQ(await(undoing.lastRun()), images);
    EXPECT_EQ(await(undoing.undo(images.first())).kind, Kind::undone);
    EXPECT_EQ(await(undoing.lastRun()), images.mid(1));
}

} // namespace ostrelle
