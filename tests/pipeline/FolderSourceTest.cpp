// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/FolderSource.h"

#include "pipeline/PipelineFixture.h"

#include <QFileInfo>
#include <cstdio>
#include <functional>

namespace ostrelle {

using namespace Qt::StringLiterals;
using Outcome = OutcomeKind;

namespace {

/// A run over the folder "game", which is empty at first.
class FolderSourceTest : public PipelineTest {
protected:
    FolderSourceTest() { settings.setIngestFolder(game); }

    QString raw(const QString& name) const { return rawImage(u"game/"_s + name); }
    QString jpeg(const QString& name) const { return jpegImage(u"game/"_s + name); }
    void runFolder(FolderImages which = FolderImages::all) { drive(analyzer.recaptionFolder(which)); }
    const QString game = folderWith(u"game"_s);
};

} // namespace

TEST_F(FolderSourceTest, AFolderIsCaptionedTenImagesAtATime) {
    QStringList images;
    for (int number = 0; number < 21; ++number) {
        images.append(number % 2 == 0 ? raw(u"IMG_%1.DNG"_s.arg(number)) : jpeg(u"IMG_%1.JPG"_s.arg(number)));
    }
    QStringList batches;
    QObject::connect(&status, &StatusStore::lastMessageChanged, &status, [this, &batches] {
        if (status.lastMessage()->startsWith(u"Processing batch")) {
            batches.append(u"%1/%2 %3+%4 @%5"_s.arg(status.currentBatchNumber())
                               .arg(status.totalBatchCount())
                               .arg(status.currentBatchStartIndex())
                               .arg(status.currentBatchSize())
                               .arg(status.currentFileIndex()));
        }
    });
    QList<qint64> timed;
    QObject::connect(&status, &StatusStore::batchFinished, &status,
                     [&timed](const BatchTiming& timing) { timed.append(timing.imageCount); });
    settings.setIngestFolder(game + u'/');
    runFolder();

    EXPECT_EQ(requestSizes(), (QList<std::pair<qsizetype, int>>{{10, 2000}, {10, 2000}, {1, 180}}));
    for (const QString& image : std::as_const(images)) {
        EXPECT_TRUE(captionOf(image)) << image.toStdString();
    }
    EXPECT_EQ(batches, (QStringList{u"1/3 0+10 @0"_s, u"2/3 10+10 @10"_s, u"3/3 20+1 @20"_s}));
    EXPECT_EQ(messages.filter(u"Processing batch"_s).last(), u"Processing batch 3 of 3 (1 image)..."_s);
    EXPECT_TRUE(messages.first().startsWith(u"Found 21 file"));
    EXPECT_EQ(messages.last(), u"Done. Processed: 21, Failed: 0."_s);
    EXPECT_EQ(messages.filter(u"✓ "_s).size(), 20);
    EXPECT_TRUE(messages.filter(u"✓ "_s).last().endsWith(u" (20/21)"_s));
    EXPECT_EQ(timed, QList<qint64>{21});
    EXPECT_EQ(manifest.count(), 21);
    EXPECT_EQ(status.lifetimeImagesProcessed(), 21);
    EXPECT_EQ(status.pending(), 0);
    EXPECT_FALSE(status.isProcessing());
    EXPECT_FALSE(status.currentFileName());
    EXPECT_EQ(status.totalFiles() + status.currentFileIndex() + status.totalBatchCount() +
                  status.currentBatchSize() + status.currentBatchNumber() + status.currentBatchStartIndex(),
              0);
    EXPECT_EQ(notified(), QStringList{u"Successfully captioned 21 images."_s});
    EXPECT_EQ(reports.size(), 21);
    EXPECT_TRUE(images.contains(reports[0].file)) << "with or without a slash after the folder";
    EXPECT_EQ(access.held, QStringList());
    for (const QString& line :
         {u"[Analyzer] RECAPTION: Using local watch folder: "_s + game + u'/',
          u"[Analyzer] RECAPTION: Found 21 items in folder: "_s + game + u'/',
          u"[Analyzer] Force Re-analyze All: Processing all 21 files, ignoring manifest"_s,
          u"[Analyzer] Processing 21 files in 3 batch(es) of up to 10 images each"_s,
          u"[Analyzer] Completed. Processed 21, Failed 0"_s}) {
        EXPECT_TRUE(hasLogged(line)) << line.toStdString();
    }
}

TEST_F(FolderSourceTest, WhyThereIsNoRunIsTold) {
    const struct {
        const char* what;
        std::function<void()> prepare;
        QStringList alerts;
        QString message;
        qint64 failed; ///< 7 if the counters stay untouched
        QString line;
    } rows[] = {
        {"no image",
         [this] { write(u"game/.IMG_2.JPG"_s, "x"); },
         {u"No New Images Found"_s},
         u"No new files to process."_s,
         0,
         u"[Analyzer] RECAPTION: Found 0 items in folder: "_s + game},
        {"no roster",
         [this] { settings.setCodeReplacementsFile(std::nullopt); },
         {u"Code Replacement File Required"_s},
         u"Code replacement file required."_s,
         0,
         u"[Analyzer] No code replacement file selected or auto-discovered."_s},
        {"a folder that nobody may read",
         [this] {
             settings.setCodeReplacementsFile(path(u"roster.txt"_s));
             setMode(game, 0300);
         },
         {},
         u"Failed to read folder: game. Error: Could not read %1: Permission denied."_s.arg(game),
         1,
         u"[Analyzer] ERROR: Failed to read directory at %1: Could not read %1: Permission denied."_s.arg(
             game)},
        {"a file",
         [this] { settings.setIngestFolder(path(u"roster.txt"_s)); },
         {},
         u"Folder not found: roster.txt. Please check your folder settings."_s,
         1,
         u"[Analyzer] ERROR: Folder does not exist or is not accessible: "_s + path(u"roster.txt"_s)},
        {"no such folder",
         [this] { settings.setIngestFolder(path(u"gone"_s)); },
         {},
         u"Folder not found: gone. Please check your folder settings."_s,
         1,
         u"[Analyzer] ERROR: Folder does not exist or is not accessible: "_s + path(u"gone"_s)},
        {"no local folder",
         [this] { settings.setIngestFolder(std::nullopt); },
         {},
         u"No folder selected. Choose a folder first."_s,
         0,
         u"[Analyzer] ERROR: No ingest folder selected for recaption operation."_s},
        {"no folder of the remote source",
         [this] { settings.setSourceType(SourceType::ftp); },
         {},
         u"No FTP destination folder selected. Choose a folder first."_s,
         0,
         u"[Analyzer] ERROR: No FTP destination folder selected for recaption operation."_s},
        {"no key",
         [this] { defaults.remove(apiKeyName); },
         {u"API Key Required"_s},
         u"Please add your API key in Settings."_s,
         7,
         {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        status.setProcessed(7);
        status.setFailed(7);
        status.setPending(7);
        alerts.shown.clear();
        QFile::remove(log.path());

        row.prepare();
        runFolder(FolderImages::onlyNew);
        setMode(game, 0755);

        EXPECT_EQ(alerts.titles(), row.alerts);
        EXPECT_EQ(status.lastMessage(), row.message);
        EXPECT_EQ(status.failed(), row.failed);
        EXPECT_EQ(status.processed(), row.failed == 7 ? 7 : 0);
        EXPECT_EQ(status.pending(), row.failed == 7 ? 7 : 0);
        EXPECT_TRUE(row.line.isEmpty() || hasLogged(row.line));
        EXPECT_FALSE(status.isProcessing());
    }
    EXPECT_TRUE(model.requests().isEmpty());
    EXPECT_EQ(notified(), QStringList());
    EXPECT_EQ(access.held, QStringList());
}

TEST_F(FolderSourceTest, ARosterInTheFolderIsEnoughToBegin) {
    settings.setCodeReplacementsFile(std::nullopt);
    write(u"game/code_replacements.txt"_s, "7\tAda Fox\n");
    settings.setSourceType(SourceType::ftp);
    settings.setDestinationFolder(game);
    settings.setIngestFolder(std::nullopt);
    const QString image = jpeg(u"IMG_1.JPG"_s);
    runFolder();
    EXPECT_TRUE(hasLogged(u"[Analyzer] RECAPTION: Using FTP destination folder: "_s + game));
    EXPECT_TRUE(hasLogged(u"[Analyzer] No code replacements file found"_s))
        << "only the watch folder is searched";
    EXPECT_TRUE(captionOf(image));
    EXPECT_FALSE(model.requests().last().body.contains("Ada Fox"));
}

TEST_F(FolderSourceTest, OnlyImagesThatAreNewOrChangedAreCaptionedAgain) {
    const QString kept = raw(u"IMG_1.DNG"_s);
    const QString edited = raw(u"IMG_2.DNG"_s);
    write(u"game/IMG_3.DNG"_s, "no picture");
    runFolder(FolderImages::onlyNew);
    EXPECT_TRUE(hasLogged(u"Analyze New Only: Found 3 total files, 0 already in manifest, 3 to process"_s));
    EXPECT_EQ(manifest.count(), 2) << "a failed image stays new";
    write(u"game/IMG_2.DNG"_s, read(u"game/IMG_2.DNG"_s) + "edited");
    raw(u"IMG_3.DNG"_s);

    reports.clear();
    runFolder(FolderImages::onlyNew);
    EXPECT_TRUE(hasLogged(u"Analyze New Only: Found 3 total files, 1 already in manifest, 2 to process"_s));
    EXPECT_EQ(reports.size(), 2);
    runFolder(FolderImages::onlyNew);
    EXPECT_EQ(alerts.titles(), QStringList{u"No New Images Found"_s});

    reports.clear();
    runFolder();
    EXPECT_EQ(reports.size(), 3) << "whatever is in the manifest";
}

TEST_F(FolderSourceTest, FailedImagesAreListedTwiceAndThoseLeftAloneOnce) {
    settings.setAlwaysOverwriteCaptions(false);
    raw(u"bad.DNG"_s);
    write(u"game/bad.xmp"_s, "<broken");
    raw(u"done.DNG"_s);
    sidecar(QByteArray(51, 'x'), u"game/done.xmp"_s);
    raw(u"new.DNG"_s);
    runFolder();
    ASSERT_EQ(notified().size(), 2);
    EXPECT_EQ(notified()[0], u"Successfully captioned 1 image."_s);
    const QString names = notified()[1].mid(u"Failed to caption 1 image. Files: "_s.size()).chopped(1);
    QStringList sorted = names.split(u", "_s);
    EXPECT_EQ(sorted.takeFirst(), u"bad.DNG"_s);
    sorted.sort();
    EXPECT_EQ(sorted, (QStringList{u"bad.DNG"_s, u"done.DNG"_s})) << names.toStdString();
    EXPECT_EQ(status.lastMessage(), u"Done. Processed: 1, Failed: 1."_s);
    EXPECT_EQ(status.pending(), 1) << "the skipped image";
}

TEST_F(FolderSourceTest, AnImageWhoseNameIsNotUtf8HasFailed) {
    const QByteArray bad = QFile::encodeName(game) + "/bad\xFF.jpg";
    std::FILE* file = std::fopen(bad.constData(), "w");
    ASSERT_NE(file, nullptr);
    std::fclose(file);
    runFolder();
    std::remove(bad.constData()); // which Qt would not find
    EXPECT_EQ(status.lastMessage(), u"Done. Processed: 0, Failed: 1."_s);
    ASSERT_EQ(reports.size(), 1);
    EXPECT_EQ(reports[0].kind, Outcome::failed);
    EXPECT_EQ(reports[0].reason, u"Its file name is not UTF-8, so it cannot be opened. Rename it."_s);
    EXPECT_EQ(notified().size(), 1);
}

TEST_F(FolderSourceTest, AnAlertHoldsNoImageUp) {
    alerts.isOpen = true;
    auto folderRun = analyzer.recaptionFolder(FolderImages::all);
    waitUntil([this] { return alerts.titles() == QStringList{u"No New Images Found"_s}; });
    auto image = analyzer.analyzeSingle(rawImage());
    waitUntil([this] { return reports.size() == 1; });
    clock.advance(std::chrono::seconds(2));
    EXPECT_TRUE(await(std::move(image)));
    alerts.close();
    await(std::move(folderRun));
}

TEST_F(FolderSourceTest, WhenTheProgramEndsTheCaptionsInHandAreWritten) {
    for (int number = 0; number < 12; ++number) {
        jpeg(u"IMG_%1.JPG"_s.arg(number));
    }
    auto folderRun = analyzer.recaptionFolder(FolderImages::all);
    waitUntil([this] { return status.isWaitingForAPI(); });
    turns.close();
    auto idle = turns.idle();
    drive(std::move(folderRun));
    await(std::move(idle));
    EXPECT_EQ(requestSizes(), (QList<std::pair<qsizetype, int>>{{10, 2000}}));
    EXPECT_EQ(status.lastMessage(), u"Interrupted. Captioned: 10, failed: 0, not begun: 2."_s);
    EXPECT_TRUE(notificationCenter.posted.isEmpty());
    EXPECT_EQ(manifest.count(), 10);
    runFolder();
    EXPECT_EQ(model.requests().size(), 1) << "no further run begins";
}

TEST_F(FolderSourceTest, ARunAndSingleImagesTakeTurns) {
    const QString first = raw(u"IMG_1.DNG"_s);
    const QString second = jpeg(u"IMG_2.JPG"_s);
    model.enqueue(held(u"By itself."_s));
    auto early = analyzer.analyzeSingle(first);
    waitUntil([this] { return model.isHolding(); });

    auto folderRun = analyzer.recaptionFolder(FolderImages::all);
    waitUntil([this] { return hasLogged(u"RECAPTION: Using local watch folder"_s); });
    EXPECT_EQ(status.totalFiles(), 1) << "the progress is that of the current image";
    model.releaseHeld();
    waitUntil([this] { return status.totalFiles() == 2; });
    EXPECT_EQ(captionOf(first), u"By itself."_s);
    auto again = analyzer.analyzeSingle(second);
    auto late = analyzer.analyzeSingle(rawImage(u"IMG_9.DNG"_s));
    clock.advance(std::chrono::seconds(2)); // the early image's progress has been visible long enough
    EXPECT_TRUE(await(std::move(early)));
    EXPECT_TRUE(status.isProcessing());
    EXPECT_EQ(status.totalFiles(), 2);

    drive(std::move(folderRun));
    EXPECT_NE(captionOf(first), u"By itself."_s) << "the run captions every image again";
    EXPECT_FALSE(QFileInfo::exists(path(u"IMG_9.xmp"_s))) << "the late image waits";
    EXPECT_TRUE(await(std::move(late)));
    EXPECT_TRUE(await(std::move(again)));
    EXPECT_EQ(requestSizes(), (QList<std::pair<qsizetype, int>>{{1, 180}, {2, 2000}, {1, 180}}))
        << "an image that the run has captioned is skipped";
    clock.advance(std::chrono::seconds(2));
    EXPECT_FALSE(status.isProcessing());
    EXPECT_EQ(status.totalFiles(), 0);
}

} // namespace ostrelle
