// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/BatchRun.h"

#include "pipeline/PipelineFixture.h"

#include <QFileInfo>

namespace ostrelle {

using namespace Qt::StringLiterals;
using Outcome = OutcomeKind;

namespace {

/// A batch at the start of a run over the same number of images.
class BatchRunTest : public PipelineTest {
protected:
    QList<ImageOutcome> runBatch(const QStringList& files) {
        status.setTotalFiles(files.size());
        status.setPending(files.size());
        messages.clear();
        return drive(captionBatch(files));
    }
    /// The model's answer to a batch: the captions with their image numbers.
    static QString list(const QList<std::pair<int, QString>>& captions) {
        QJsonArray items;
        for (const auto& [number, caption] : captions) {
            items.append(QJsonObject{{u"image"_s, number}, {u"caption"_s, caption}});
        }
        return QString::fromUtf8(QJsonDocument(items).toJson());
    }
};

QList<Outcome> kindsOf(const QList<ImageOutcome>& outcomes) {
    QList<Outcome> kinds;
    for (const ImageOutcome& image : outcomes) {
        kinds.append(image.kind);
    }
    return kinds;
}

} // namespace

TEST_F(BatchRunTest, ImagesAreAskedForTogetherAndWrittenAsTheyCome) {
    sidecar("Stub");
    const QStringList files{rawImage(), jpegImage(u"IMG_2.JPG"_s)};
    model.enqueue(reply(list({{2, u"Second."_s}, {1, u"First.\nAnd more."_s}})));

    const QList<ImageOutcome> outcome = runBatch(files);

    EXPECT_EQ(captionOf(files[0]), u"First.\nAnd more."_s) << "unchanged: no credit added, all lines kept";
    EXPECT_EQ(captionOf(files[1]), u"Second."_s);
    EXPECT_EQ(kindsOf(outcome), QList<Outcome>(2, Outcome::captioned));

    ASSERT_EQ(model.requests().size(), 1);
    EXPECT_EQ(model.lastJson()[u"max_tokens"_s], 2000);
    ASSERT_EQ(texts().size(), 4);
    EXPECT_TRUE(texts()[0].contains(u"\nCode Replacements:\n12\tSam Abel\n"_s));
    EXPECT_TRUE(
        texts()[1].startsWith(u"\n\n--- IMAGE 1: IMG_1.DNG ---\nContext:\n- Event: Herons vs. Foxes\n"_s));
    EXPECT_TRUE(texts()[1].endsWith(u"\n\nExisting caption (may be minimal): Stub"_s));
    EXPECT_TRUE(texts()[2].endsWith(u"\n\nExisting caption (may be minimal): No caption"_s));

    EXPECT_EQ(
        messages,
        (QStringList{u"Preparing 2 images for batch processing..."_s, u"Uploading: IMG_1.DNG"_s,
                     u"Uploading: IMG_2.JPG"_s, u"Uploaded 2 images. Generating captions..."_s,
                     u"Writing captions to files..."_s, u"✓ IMG_1.DNG (1/2)"_s, u"✓ IMG_2.JPG (2/2)"_s}));
    EXPECT_EQ(status.processed(), 2);
    EXPECT_EQ(status.pending(), 0);
    EXPECT_EQ(status.lifetimeImagesProcessed(), 2);
    EXPECT_EQ(status.currentBatchSize(), 2);
    EXPECT_FALSE(status.isWaitingForAPI());
    EXPECT_EQ(usage.todaysTokens(), 1'500'000);
    EXPECT_TRUE(console.lines.contains(u"[Analyzer] Batch Size: 2 images"_s));
    EXPECT_TRUE(await(manifest.isProcessed(files[0])) && await(manifest.isProcessed(files[1])))
        << "a JPEG is recorded as it is after the write";
    EXPECT_TRUE(access.held.isEmpty());
    EXPECT_FALSE(QFileInfo::exists(path(u"data/OpenAI_Previews"_s)));
}

TEST_F(BatchRunTest, WhileTheModelThinksTheStatusSaysSo) {
    const QStringList files{rawImage(), jpegImage(u"IMG_2.JPG"_s)};
    model.enqueue(held(list({{1, u"First."_s}, {2, u"Second."_s}})));
    status.setTotalFiles(12);
    auto task = captionBatch(files, 10);
    EXPECT_EQ(status.currentFileIndex(), 11);
    waitUntil([this] { return model.isHolding(); });
    EXPECT_TRUE(status.isWaitingForAPI());
    EXPECT_FALSE(status.currentFileName());
    EXPECT_EQ(status.currentBatchStartIndex(), 10);
    EXPECT_EQ(status.currentFileIndex(), 12);
    model.releaseHeld();
    drive(std::move(task));
    EXPECT_FALSE(status.isWaitingForAPI());
    EXPECT_EQ(status.currentFileName(), u"IMG_2.JPG"_s);
}

TEST_F(BatchRunTest, TheOneImageOfTenThatNeedsACaptionIsAskedForAlone) {
    settings.setAlwaysOverwriteCaptions(false);
    const QByteArray longCaption(51, 'x');
    QStringList files;
    for (int number = 0; number < 10; ++number) {
        files.append(rawImage(u"IMG_%1.DNG"_s.arg(number)));
        sidecar(number == 7 ? QByteArray("Stub") : longCaption, u"IMG_%1.xmp"_s.arg(number));
    }
    model.enqueue(reply(u"Abel\nscores."_s));

    const QList<ImageOutcome> outcome = runBatch(files);

    ASSERT_EQ(model.requests().size(), 1);
    EXPECT_EQ(model.lastJson()[u"max_tokens"_s], 180);
    EXPECT_EQ(captionOf(files[7]), u"Abel\nscores. (A. Photographer)"_s);
    EXPECT_EQ(captionOf(files[6]), QString::fromLatin1(longCaption));
    EXPECT_EQ(outcome[7].kind, Outcome::captioned);
    EXPECT_EQ(kindsOf(outcome).count(Outcome::skipped), 9);
    EXPECT_EQ(messages.last(), u"Processed: IMG_7.DNG"_s);
    EXPECT_EQ(status.pending(), 9) << "a skipped image counts as neither processed nor failed";
    EXPECT_EQ(status.processed() + status.failed(), 1);
    EXPECT_TRUE(hasLogged(u"[Analyzer] IMG_6.DNG already has caption, skipping (overwrite disabled)"_s));
    EXPECT_EQ(reports.size(), 10);
    EXPECT_EQ(reports.first().kind, Outcome::skipped);
    EXPECT_EQ(reports.last().captionAfter, u"Abel\nscores. (A. Photographer)"_s);
    EXPECT_EQ(manifest.count(), 1);
}

TEST_F(BatchRunTest, ASingleImageThatFailsIsToldByItself) {
    const QString image = rawImage();
    model.enqueue(refusal());
    EXPECT_EQ(runBatch({image})[0].kind, Outcome::failed);
    EXPECT_EQ(messages.last(), u"Failed: IMG_1.DNG"_s);
    EXPECT_TRUE(hasLogged(u"[Analyzer] Failed to process single image IMG_1.DNG: OpenAI HTTP 500: {}"_s));
    EXPECT_EQ(manifest.count(), 0);
    EXPECT_EQ(reports.last().reason, u"OpenAI HTTP 500: {}"_s);
}

TEST_F(BatchRunTest, NothingIsAskedWhenNoImageCanBePrepared) {
    const QString locked = folderWith(u"locked"_s);
    sidecar("Stub", u"locked/IMG_4.xmp"_s);
    write(u"IMG_1.xmp"_s, "<broken");
    const QStringList files{write(u"IMG_0.JPG"_s, "no picture"), rawImage(),
                            write(u"IMG_2.DNG"_s, "no picture"), rawImage(u"locked/IMG_3.DNG"_s),
                            rawImage(u"locked/IMG_4.DNG"_s)};
    setMode(locked, 0555);
    const QList<ImageOutcome> outcome = runBatch(files);
    setMode(locked, 0755);
    EXPECT_TRUE(model.requests().isEmpty());
    EXPECT_EQ(kindsOf(outcome), QList<Outcome>(5, Outcome::failed));
    EXPECT_EQ(messages.last(), u"Failed: IMG_4.DNG"_s);
    EXPECT_EQ(status.failed(), 5);
    EXPECT_EQ(status.pending(), 0);
    EXPECT_EQ(status.totalFailedAllTime(), 5);
    for (const ImageOutcome& image : outcome) {
        EXPECT_TRUE(hasLogged(u"[Analyzer] Failed to prepare %1: "_s.arg(QFileInfo(image.file).fileName())));
    }
    EXPECT_TRUE(hasLogged(u"[Analyzer] Could not read metadata for IMG_1.DNG: The XML is not well formed"_s));
    EXPECT_TRUE(
        hasLogged(u"[Analyzer] Failed to create XMP sidecar for RAW file IMG_3.DNG in folder: "_s + locked));
    EXPECT_EQ(read(u"IMG_1.xmp"_s), "<broken");
    EXPECT_EQ(captionOf(files[4]), u"Stub"_s);
    EXPECT_TRUE(access.held.isEmpty());
}

TEST_F(BatchRunTest, ABatchThatFailsIsAskedForOneByOne) {
    sidecar("Stub");
    const QStringList files{rawImage(), rawImage(u"IMG_2.DNG"_s), jpegImage(u"IMG_3.JPG"_s)};
    model.enqueue(reply(u"I see a goal."_s));
    model.enqueue(reply(u"Abel\nscores."_s));
    model.enqueue(reply(u"Foxes cheer."_s));
    model.enqueue(refusal());

    const QList<ImageOutcome> outcome = runBatch(files);

    EXPECT_EQ(kindsOf(outcome), (QList<Outcome>{Outcome::captioned, Outcome::captioned, Outcome::failed}));
    EXPECT_EQ(captionOf(files[0]), u"Abel\nscores. (A. Photographer)"_s);
    EXPECT_EQ(captionOf(files[1]), u"Foxes cheer."_s) << "no rights, so no credit";
    EXPECT_EQ(requestSizes(), (QList<std::pair<qsizetype, int>>{{3, 2000}, {1, 180}, {1, 180}, {1, 180}}));
    EXPECT_TRUE(texts().value(0).contains(u"\nCode Replacements:\n12\tSam Abel\n"_s));
    EXPECT_EQ(messages.last(3),
              (QStringList{u"✓ IMG_1.DNG (1/3)"_s, u"✓ IMG_2.DNG (2/3)"_s, u"✗ Failed: IMG_3.JPG (3/3)"_s}));
    EXPECT_EQ(status.processed(), 2);
    EXPECT_EQ(status.failed(), 1);
    EXPECT_EQ(status.pending(), 0);
    EXPECT_FALSE(status.isWaitingForAPI());
    EXPECT_TRUE(await(manifest.isProcessed(files[0])));
    EXPECT_FALSE(await(manifest.isProcessed(files[2]))) << "a failed image stays new";
    EXPECT_TRUE(hasLogged(u"[Analyzer] Batch API failed, falling back to individual processing: "_s));
    EXPECT_TRUE(hasLogged(u"[Analyzer] Individual fallback failed for IMG_3.JPG: OpenAI HTTP 500: {}"_s));
    EXPECT_EQ(console.count(u"[Analyzer] Batch API failed (error: "_s), 1);
}

TEST_F(BatchRunTest, ACaptionOnlyEverGoesToItsOwnImage) {
    QStringList files;
    for (const QString& name : {u"morning"_s, u"noon"_s, u"evening"_s, u"night"_s}) {
        folderWith(name);
        files.append(rawImage(name + u"/IMG_1.DNG"_s));
        sidecar("Stub", name + u"/IMG_1.xmp"_s);
    }
    model.enqueue(
        reply(list({{4, u"  "_s}, {3, u"Evening."_s}, {1, u"Morning."_s}, {1, u"Whose is it?"_s}})));
    const QList<ImageOutcome> outcome = runBatch(files);
    EXPECT_EQ(captionOf(files[0]), u"Morning."_s);
    EXPECT_EQ(captionOf(files[1]), u"Stub"_s);
    EXPECT_EQ(captionOf(files[2]), u"Evening."_s);
    EXPECT_EQ(captionOf(files[3]).value_or(QString()), QString());
    EXPECT_EQ(kindsOf(outcome),
              (QList<Outcome>{Outcome::captioned, Outcome::failed, Outcome::captioned, Outcome::captioned}));
    EXPECT_EQ(outcome[1].reason, u"The model returned no caption for it."_s);
    EXPECT_TRUE(hasLogged(u"[Analyzer] No caption returned for IMG_1.DNG in batch response"_s));
}

TEST_F(BatchRunTest, ARosterThatCannotBeReadIsToldOfInABatchOnly) {
    setMode(path(u"roster.txt"_s), 0);
    const QString line = u"[Analyzer] Failed to read Code Replacements file: "_s;
    const QStringList files{rawImage(), jpegImage(u"IMG_2.JPG"_s)};
    EXPECT_EQ(runBatch({files[0]})[0].warnings,
              QStringList(u"The names in roster.txt will not be used: it cannot be read "
                          "(Permission denied)."_s));
    EXPECT_FALSE(hasLogged(line));
    EXPECT_EQ(kindsOf(runBatch(files)), QList<Outcome>(2, Outcome::captioned));
    EXPECT_TRUE(hasLogged(line));
    EXPECT_FALSE(texts().value(0).contains(u"Code Replacements:"_s));
    setMode(path(u"roster.txt"_s), 0644);

    write(u"roster.txt"_s, "1\tSam\n" + QByteArray(20'000, 'x'));
    runBatch(files);
    EXPECT_EQ(console.count(u"[Analyzer] WARNING: Code Replacements file is very large (20006 chars). "_s),
              1);
    EXPECT_FALSE(hasLogged(u"Code Replacements truncated"_s)) << "only logged for single images";
}

} // namespace ostrelle
