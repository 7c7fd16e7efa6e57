// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/BatchRun.h"

#include "pipeline/PipelineFixture.h"

#include <QFileInfo>

namespace ostrelle {

using namespace Qt::StringLiterals;
using Outcome = OutcomeKind;

namespace {

/// A batch as part of a run over as many images, at its beginning.
class BatchRunTest : public PipelineTest {
protected:
    BatchRunTest() {
        QObject::connect(&status, &StatusStore::lastMessageChanged, &status,
                         [this] { messages.append(status.lastMessage().value_or(QString())); });
    }

    QList<ImageOutcome> runBatch(const QStringList& files) {
        status.setTotalFiles(files.size());
        status.setPending(files.size());
        messages.clear();
        return drive(captionBatch(files));
    }
    /// The model's answer to a batch: the captions with the number of their image.
    static StandInAnswer batchReply(const QList<std::pair<int, QString>>& captions) {
        QJsonArray list;
        for (const auto& [number, caption] : captions) {
            list.append(QJsonObject{{u"image"_s, number}, {u"caption"_s, caption}});
        }
        return reply(QString::fromUtf8(QJsonDocument(list).toJson()));
    }
    static StandInAnswer failure() { return {.status = 500, .body = "{}"}; }
    QString folderWith(const QString& name) const {
        EXPECT_TRUE(QDir(folder.path()).mkpath(name));
        return folder.filePath(name);
    }

    QStringList messages;
};

/// The pieces of text that a batch request has, in their order.
QStringList textsOf(const QJsonObject& request) {
    QStringList texts;
    for (const QJsonValue block : request[u"messages"_s][1][u"content"_s].toArray()) {
        if (block[u"type"_s] == u"text"_s) {
            texts.append(block[u"text"_s].toString());
        }
    }
    return texts;
}

QList<bool> successesOf(const QList<ImageOutcome>& outcomes) {
    QList<bool> successes;
    for (const ImageOutcome& image : outcomes) {
        successes.append(image.kind == OutcomeKind::captioned);
    }
    return successes;
}

QStringList failedNames(const QList<ImageOutcome>& outcomes) {
    QStringList names;
    for (const ImageOutcome& image : outcomes) {
        names.append(isFailure(image.kind) ? QStringList{QFileInfo(image.file).fileName()} : QStringList());
    }
    return names;
}

} // namespace

TEST_F(BatchRunTest, ImagesAreAskedForTogetherAndWrittenAsTheyCome) {
    sidecar("Stub");
    const QStringList files{rawImage(), jpegImage(u"IMG_2.JPG"_s)};
    model.enqueue(batchReply({{2, u"Second."_s}, {1, u"First.\nAnd more."_s}}));

    const QList<ImageOutcome> outcome = runBatch(files);

    EXPECT_EQ(captionOf(files[0]), u"First.\nAnd more."_s) << "as it came: no credit, all lines";
    EXPECT_EQ(captionOf(files[1]), u"Second."_s);
    EXPECT_EQ(successesOf(outcome), (QList<bool>{true, true}));
    EXPECT_EQ(failedNames(outcome), QStringList());

    ASSERT_EQ(model.requests().size(), 1);
    EXPECT_EQ(model.lastJson()[u"max_tokens"_s], 2000);
    const QStringList texts = textsOf(model.lastJson());
    ASSERT_EQ(texts.size(), 4);
    EXPECT_TRUE(texts[0].contains(u"\nCode Replacements:\n12\tSam Abel\n"_s));
    EXPECT_TRUE(
        texts[1].startsWith(u"\n\n--- IMAGE 1: IMG_1.DNG ---\nContext:\n- Event: Herons vs. Foxes\n"_s));
    EXPECT_TRUE(texts[1].endsWith(u"\n\nExisting caption (may be minimal): Stub"_s));
    EXPECT_TRUE(texts[2].endsWith(u"\n\nExisting caption (may be minimal): No caption"_s));

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
        << "a JPEG is known as it is after the write";
    EXPECT_EQ(access.begun, access.ended);
    EXPECT_FALSE(QFileInfo::exists(folder.filePath(u"data/OpenAI_Previews"_s)));
}

TEST_F(BatchRunTest, WhileTheModelThinksTheStatusSaysSo) {
    const QStringList files{rawImage(), jpegImage(u"IMG_2.JPG"_s)};
    StandInAnswer slow = batchReply({{1, u"First."_s}, {2, u"Second."_s}});
    slow.delivery = StandInAnswer::Delivery::held;
    model.enqueue(slow);
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
    EXPECT_EQ(successesOf(outcome).count(true), 1);
    EXPECT_EQ(outcome[7].kind, Outcome::captioned);
    EXPECT_EQ(failedNames(outcome), QStringList());
    EXPECT_EQ(messages.last(), u"Processed: IMG_7.DNG"_s);
    EXPECT_EQ(status.pending(), 9) << "an image that is left alone counts nowhere";
    EXPECT_EQ(status.processed() + status.failed(), 1);
    EXPECT_TRUE(hasLogged(u"[Analyzer] IMG_6.DNG already has caption, skipping (overwrite disabled)"_s));
    EXPECT_EQ(reports.size(), 10);
    EXPECT_EQ(reports.first().kind, Outcome::skipped);
    EXPECT_EQ(reports.last().captionAfter, u"Abel\nscores. (A. Photographer)"_s);
    EXPECT_EQ(manifest.count(), 1);
}

TEST_F(BatchRunTest, ASingleImageThatFailsIsToldByItself) {
    const QString image = rawImage();
    model.enqueue(failure());
    EXPECT_EQ(failedNames(runBatch({image})), QStringList{u"IMG_1.DNG"_s});
    EXPECT_EQ(messages.last(), u"Failed: IMG_1.DNG"_s);
    EXPECT_TRUE(hasLogged(u"[Analyzer] Failed to process single image IMG_1.DNG: OpenAI HTTP 500: {}"_s));
    EXPECT_EQ(manifest.count(), 0);
    EXPECT_EQ(reports.last().reason, u"OpenAI HTTP 500: {}"_s);
}

TEST_F(BatchRunTest, NothingIsAskedWhenNoImageCanBePrepared) {
    const QString brokenSidecar = rawImage();
    write(u"IMG_1.xmp"_s, "<broken");
    const QStringList files{write(u"IMG_0.JPG"_s, "no picture"), brokenSidecar,
                            write(u"IMG_2.DNG"_s, "no picture")};
    const QList<ImageOutcome> outcome = runBatch(files);
    EXPECT_TRUE(model.requests().isEmpty());
    EXPECT_EQ(successesOf(outcome), (QList<bool>{false, false, false}));
    EXPECT_EQ(failedNames(outcome), (QStringList{u"IMG_0.JPG"_s, u"IMG_1.DNG"_s, u"IMG_2.DNG"_s}));
    EXPECT_EQ(messages.last(), u"Failed: IMG_2.DNG"_s);
    EXPECT_EQ(status.failed(), 3);
    EXPECT_EQ(status.pending(), 0);
    EXPECT_EQ(status.totalFailedAllTime(), 3);
    for (const ImageOutcome& image : outcome) {
        EXPECT_TRUE(hasLogged(u"[Analyzer] Failed to prepare %1: "_s.arg(QFileInfo(image.file).fileName())));
    }
    EXPECT_EQ(access.begun, access.ended);
}

TEST_F(BatchRunTest, ABatchThatFailsIsAskedForOneByOne) {
    const struct {
        const char* what;
        StandInAnswer answer;
    } rows[] = {
        {"refused", failure()},
        {"no list", reply(u"I see a goal."_s)},
        {"a caption too few", batchReply({{1, u"First."_s}, {2, u"Second."_s}})},
        {"a number of no image", batchReply({{1, u"First."_s}, {2, u"Second."_s}, {4, u"Third."_s}})},
        {"the number 0", batchReply({{0, u"First."_s}, {1, u"Second."_s}, {2, u"Third."_s}})},
        {"a caption too many",
         batchReply({{1, u"First."_s}, {2, u"Second."_s}, {3, u"Third."_s}, {3, u"More."_s}})},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        QFile::remove(log.path());
        status.setProcessed(0);
        status.setFailed(0);
        sidecar("Stub");
        const QStringList files{rawImage(), rawImage(u"IMG_2.DNG"_s), jpegImage(u"IMG_3.JPG"_s)};
        const qsizetype before = model.requests().size();
        model.enqueue(row.answer);
        model.enqueue(reply(u"Abel\nscores."_s));
        model.enqueue(failure());
        model.enqueue(reply(u"Foxes cheer."_s));

        const QList<ImageOutcome> outcome = runBatch(files);

        EXPECT_EQ(successesOf(outcome), (QList<bool>{true, false, true}));
        EXPECT_EQ(failedNames(outcome), QStringList{u"IMG_2.DNG"_s});
        EXPECT_EQ(captionOf(files[0]), u"Abel\nscores. (A. Photographer)"_s);
        EXPECT_EQ(captionOf(files[2]), u"Foxes cheer."_s) << "it has no rights";
        ASSERT_EQ(model.requests().size() - before, 4);
        const QJsonObject second = requestOf(before + 2);
        EXPECT_EQ(second[u"max_tokens"_s], 180);
        EXPECT_TRUE(textsOf(second).value(0).contains(u"\nCode Replacements:\n12\tSam Abel\n"_s));
        EXPECT_EQ(messages.last(3), (QStringList{u"✓ IMG_1.DNG (1/3)"_s, u"✗ Failed: IMG_2.DNG (2/3)"_s,
                                                 u"✓ IMG_3.JPG (3/3)"_s}));
        EXPECT_EQ(status.processed(), 2);
        EXPECT_EQ(status.failed(), 1);
        EXPECT_EQ(status.pending(), 0);
        EXPECT_FALSE(status.isWaitingForAPI());
        EXPECT_TRUE(await(manifest.isProcessed(files[0])));
        EXPECT_FALSE(await(manifest.isProcessed(files[1]))) << "what has failed stays new";
        EXPECT_TRUE(hasLogged(u"[Analyzer] Batch API failed, falling back to individual processing: "_s));
        EXPECT_TRUE(hasLogged(u"[Analyzer] Individual fallback failed for IMG_2.DNG: OpenAI HTTP 500: {}"_s));
    }
    EXPECT_TRUE(console.lines.contains(u"[Analyzer] Batch API failed (error: OpenAI HTTP 500: {}), "
                                       "falling back to individual processing"_s));
}

TEST_F(BatchRunTest, ACaptionOnlyEverGoesToItsOwnImage) {
    const struct {
        const char* what;
        QList<std::pair<int, QString>> captions;
        QList<std::optional<QString>> written;
    } rows[] = {
        {"in another order",
         {{3, u"Third."_s}, {1, u"First."_s}, {2, u"Second."_s}},
         {u"First."_s, u"Second."_s, u"Third."_s}},
        {"a number twice",
         {{1, u"First."_s}, {2, u"Second."_s}, {2, u"Third."_s}},
         {u"First."_s, u"Second."_s, std::nullopt}},
        {"a number twice and one of no image",
         {{1, u"First."_s}, {1, u"More."_s}, {9, u"Ninth."_s}, {3, u"Third."_s}},
         {u"First."_s, std::nullopt, u"Third."_s}},
        {"an empty caption",
         {{1, u"First."_s}, {2, u"  "_s}, {3, u"Third."_s}},
         {u"First."_s, u""_s, u"Third."_s}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        QFile::remove(log.path());
        QStringList files;
        for (int number = 1; number <= 3; ++number) {
            files.append(rawImage(u"IMG_%1.DNG"_s.arg(number)));
            sidecar("Stub", u"IMG_%1.xmp"_s.arg(number));
        }
        model.enqueue(batchReply(row.captions));
        const QList<ImageOutcome> outcome = runBatch(files);
        for (qsizetype index = 0; index < files.size(); ++index) {
            EXPECT_EQ(captionOf(files[index]).value_or(QString()), row.written[index].value_or(u"Stub"_s));
            EXPECT_EQ(outcome[index].kind == Outcome::captioned, row.written[index].has_value());
            EXPECT_EQ(hasLogged(u"[Analyzer] No caption returned for IMG_%1.DNG in batch response"_s.arg(
                          index + 1)),
                      !row.written[index]);
        }
        EXPECT_EQ(failedNames(outcome).size(), row.written.count(std::nullopt));
    }
}

TEST_F(BatchRunTest, ImagesOfTheSameNameGetTheirOwnCaptions) {
    folderWith(u"morning"_s);
    folderWith(u"evening"_s);
    const QStringList files{rawImage(u"morning/IMG_1.DNG"_s), rawImage(u"evening/IMG_1.DNG"_s),
                            jpegImage(u"evening/IMG_2.JPG"_s)};
    sidecar("Sunrise", u"morning/IMG_1.xmp"_s);
    sidecar("Sunset", u"evening/IMG_1.xmp"_s);
    model.enqueue(batchReply({{1, u"Morning."_s}, {2, u"Evening."_s}, {2, u"Whose is it?"_s}}));
    const QList<ImageOutcome> outcome = runBatch(files);
    EXPECT_EQ(captionOf(files[0]), u"Morning."_s);
    EXPECT_EQ(captionOf(files[1]), u"Evening."_s);
    EXPECT_EQ(successesOf(outcome), (QList<bool>{true, true, false}));
    EXPECT_EQ(outcome[2].reason, u"The model returned no caption for it."_s);
}

TEST_F(BatchRunTest, AFolderThatCannotBeWrittenFailsItsImagesAlone) {
    const QString locked = folderWith(u"locked"_s);
    const QStringList files{rawImage(), rawImage(u"locked/IMG_2.DNG"_s), rawImage(u"locked/IMG_3.DNG"_s),
                            jpegImage(u"locked/IMG_4.JPG"_s)};
    sidecar("Stub", u"locked/IMG_3.xmp"_s);
    setMode(locked, 0555);
    const QList<ImageOutcome> outcome = runBatch(files);
    setMode(locked, 0755);
    EXPECT_EQ(successesOf(outcome), (QList<bool>{true, false, false, false}));
    EXPECT_FALSE(captionOf(files[0]).value_or(QString()).isEmpty());
    EXPECT_EQ(captionOf(files[2]), u"Stub"_s);
    EXPECT_TRUE(
        hasLogged(u"[Analyzer] Failed to create XMP sidecar for RAW file IMG_2.DNG in folder: "_s + locked));
    EXPECT_TRUE(hasLogged(u"[Analyzer] Failed to prepare IMG_2.DNG: Could not "_s));
    EXPECT_TRUE(hasLogged(u"[Analyzer] Failed to prepare IMG_3.DNG: Could not "_s));
    EXPECT_TRUE(hasLogged(u"[Analyzer] Failed to prepare IMG_4.JPG: "_s));
    EXPECT_EQ(manifest.count(), 1) << "what has failed stays new";
    EXPECT_EQ(status.failed(), 3);
}

TEST_F(BatchRunTest, ASidecarThatNobodyMayReadIsMadeAnew) {
    const QString image = rawImage();
    sidecar("Nobody knows");
    setMode(folder.filePath(u"IMG_1.xmp"_s), 0);
    EXPECT_TRUE(runBatch({image, jpegImage(u"IMG_2.JPG"_s)})[0].kind == Outcome::captioned);
    EXPECT_TRUE(console.lines.contains(u"[Analyzer] Recreated unreadable XMP sidecar for IMG_1.DNG"_s));
    EXPECT_TRUE(textsOf(model.lastJson()).value(1).endsWith(u"No caption"_s));
}

TEST_F(BatchRunTest, ARosterThatCannotBeReadIsToldOfInABatchOnly) {
    const QString roster = folder.filePath(u"roster.txt"_s);
    setMode(roster, 0);
    const QString line = u"[Analyzer] Failed to read Code Replacements file: "_s;
    const QString image = rawImage();
    EXPECT_TRUE(runBatch({image})[0].kind == Outcome::captioned);
    EXPECT_FALSE(hasLogged(line));
    EXPECT_EQ(reports.last().warnings,
              QStringList(u"The names in roster.txt will not be used: it cannot be read "
                          "(Permission denied)."_s));
    EXPECT_TRUE(runBatch({image, jpegImage(u"IMG_2.JPG"_s)})[0].kind == Outcome::captioned);
    EXPECT_TRUE(hasLogged(line));
    EXPECT_FALSE(textsOf(model.lastJson()).value(0).contains(u"Code Replacements:"_s));
    setMode(roster, 0644);

    write(u"roster.txt"_s, "1\tSam\n" + QByteArray(20'000, 'x'));
    runBatch({image, jpegImage(u"IMG_2.JPG"_s)});
    EXPECT_EQ(console.lines
                  .filter(u"[Analyzer] WARNING: Code Replacements file is very large (20006 chars). "
                          "Truncated to 5 chars"_s)
                  .size(),
              1);
    EXPECT_FALSE(hasLogged(u"Code Replacements truncated"_s)) << "that is said of single images";
}

} // namespace ostrelle
