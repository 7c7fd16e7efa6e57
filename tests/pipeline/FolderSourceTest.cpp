// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/FolderSource.h"

#include "pipeline/PipelineFixture.h"

#include <sys/stat.h>

#include <QFileInfo>
#include <QSignalSpy>
#include <cstdio>
#include <functional>

namespace ostrelle {

using namespace Qt::StringLiterals;
using Outcome = OutcomeKind;

namespace {

/// A run over the folder "game", which has nothing in it yet.
class FolderSourceTest : public PipelineTest {
protected:
    FolderSourceTest() {
        EXPECT_TRUE(QDir(folder.path()).mkdir(u"game"_s));
        settings.setIngestFolder(game);
    }

    QString raw(const QString& name) const { return rawImage(u"game/"_s + name); }
    QString jpeg(const QString& name) const { return jpegImage(u"game/"_s + name); }
    void runFolder(FolderImages which = FolderImages::all) { drive(analyzer.recaptionFolder(which)); }
    QStringList notified() const {
        QStringList bodies;
        for (const DesktopNotification& notification : notificationCenter.posted) {
            bodies.append(notification.body);
        }
        return bodies;
    }
    /// How many pictures each request to the model had, and the most tokens that it asked for.
    QList<std::pair<qsizetype, int>> requestSizes() const {
        QList<std::pair<qsizetype, int>> sizes;
        for (const HttpRequest& request : model.requests()) {
            sizes.append({request.body.count("\"image_url\":{"),
                          QJsonDocument::fromJson(request.body)[u"max_tokens"_s].toInt()});
        }
        return sizes;
    }

    const QString game = folder.filePath(u"game"_s);
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
            batches.append(u"%1/%2 %3+%4 @%5 %6"_s.arg(status.currentBatchNumber())
                               .arg(status.totalBatchCount())
                               .arg(status.currentBatchStartIndex())
                               .arg(status.currentBatchSize())
                               .arg(status.currentFileIndex())
                               .arg(*status.lastMessage()));
        }
    });
    QList<qint64> timed;
    QObject::connect(&status, &StatusStore::batchFinished, &status,
                     [&timed](const BatchTiming& timing) { timed.append(timing.imageCount); });
    QStringList messages;
    QObject::connect(&status, &StatusStore::lastMessageChanged, &status,
                     [this, &messages] { messages.append(*status.lastMessage()); });

    runFolder();

    EXPECT_EQ(requestSizes(), (QList<std::pair<qsizetype, int>>{{10, 2000}, {10, 2000}, {1, 180}}));
    for (const QString& image : std::as_const(images)) {
        EXPECT_TRUE(captionOf(image)) << image.toStdString();
    }
    EXPECT_EQ(batches, (QStringList{u"1/3 0+10 @0 Processing batch 1 of 3 (10 images)..."_s,
                                    u"2/3 10+10 @10 Processing batch 2 of 3 (10 images)..."_s,
                                    u"3/3 20+1 @20 Processing batch 3 of 3 (1 image)..."_s}));
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
    EXPECT_EQ(access.begun, access.ended);
    for (const QString& line :
         {u"[Analyzer] RECAPTION: Using local watch folder: "_s + game,
          u"[Analyzer] RECAPTION: Found 21 items in folder: "_s + game,
          u"[Analyzer] Force Re-analyze All: Processing all 21 files, ignoring manifest"_s,
          u"[Analyzer] Processing 21 files in 3 batch(es) of up to 10 images each"_s,
          u"[Analyzer] Completed. Processed 21, Failed 0"_s}) {
        EXPECT_TRUE(hasLogged(line)) << line.toStdString();
    }
}

TEST_F(FolderSourceTest, WhyThereIsNoRunIsTold) {
    const QString key = u"test-key"_s;
    const QString missing = u"[Analyzer] ERROR: Folder does not exist or is not accessible: "_s + game;
    const struct {
        const char* what;
        std::function<void()> prepare;
        QStringList alerts;
        QString message;
        qint64 failed; ///< 7 if the counters are left as they are
        QString line;
    } rows[] = {
        {"no key",
         [this] { defaults.remove(apiKeyName); },
         {u"API Key Required"_s},
         u"Please add your API key in Settings."_s,
         7,
         {}},
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
        {"no roster",
         [this] { settings.setCodeReplacementsFile(std::nullopt); },
         {u"Code Replacement File Required"_s},
         u"Code replacement file required."_s,
         0,
         u"[Analyzer] No code replacement file selected or auto-discovered."_s},
        {"no such folder",
         [this] { QDir(game).removeRecursively(); },
         {},
         u"Folder not found: game. Please check your folder settings."_s,
         1,
         missing},
        {"a file",
         [this] {
             QDir(game).removeRecursively();
             write(u"game"_s, "x");
         },
         {},
         u"Folder not found: game. Please check your folder settings."_s,
         1,
         missing},
        {"a folder that nobody may read",
         [this] { ::chmod(QFile::encodeName(game).constData(), 0300); },
         {},
         u"Failed to read folder: game. Error: Could not read %1: Permission denied."_s.arg(game),
         1,
         u"[Analyzer] ERROR: Failed to read directory at %1: Could not read %1: Permission denied."_s.arg(
             game)},
        {"no image",
         [this] {
             write(u"game/IMG_1.xmp"_s, "x");
             write(u"game/.IMG_2.JPG"_s, "x");
         },
         {u"No New Images Found"_s},
         u"No new files to process."_s,
         0,
         u"[Analyzer] RECAPTION: Found 1 items in folder: "_s + game},
    };
    for (const auto& row : rows) {
        for (const FolderImages which : {FolderImages::all, FolderImages::onlyNew}) {
            SCOPED_TRACE(row.what);
            QFile::remove(game);
            QDir(folder.path()).mkdir(u"game"_s);
            jpeg(u"IMG_1.JPG"_s);
            if (row.alerts.contains(u"No New Images Found"_s)) {
                QFile::remove(game + u"/IMG_1.JPG"_s);
            }
            defaults.set(apiKeyName, key);
            settings.setSourceType(SourceType::local);
            settings.setIngestFolder(game);
            settings.setCodeReplacementsFile(folder.filePath(u"roster.txt"_s));
            for (const auto set :
                 {&StatusStore::setProcessed, &StatusStore::setFailed, &StatusStore::setPending}) {
                (status.*set)(7);
            }
            status.setLastMessage(std::nullopt);
            alerts.shown.clear();
            QFile::remove(log.path());

            row.prepare();
            runFolder(which);
            ::chmod(QFile::encodeName(game).constData(), 0755);

            EXPECT_EQ(alerts.titles(), row.alerts);
            EXPECT_EQ(status.lastMessage(), row.message);
            EXPECT_EQ(status.failed(), row.failed);
            EXPECT_EQ(status.processed(), row.failed == 7 ? 7 : 0);
            EXPECT_EQ(status.pending(), row.failed == 7 ? 7 : 0);
            EXPECT_TRUE(row.line.isEmpty() || hasLogged(row.line));
            EXPECT_FALSE(status.isProcessing());
        }
    }
    EXPECT_TRUE(model.requests().isEmpty());
    EXPECT_EQ(notified(), QStringList());
    EXPECT_EQ(access.begun, access.ended);
}

TEST_F(FolderSourceTest, TheFirstButtonLeadsToTheSettings) {
    defaults.remove(apiKeyName);
    QSignalSpy opened(&events, &AppEvents::showSettingsWindow);
    for (const int button : {0, 1}) {
        alerts.answer = button;
        runFolder();
        EXPECT_EQ(opened.size(), 1);
    }
    EXPECT_EQ(alerts.shown[0].buttons, (QStringList{u"Open Settings"_s, u"Cancel"_s}));
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
        << "only the watched one is searched";
    EXPECT_TRUE(captionOf(image));
    EXPECT_FALSE(model.requests().last().body.contains("Ada Fox"));
}

TEST_F(FolderSourceTest, OnlyImagesThatAreNewOrChangedAreCaptionedAgain) {
    const QString kept = raw(u"IMG_1.DNG"_s);
    const QString edited = raw(u"IMG_2.DNG"_s);
    write(u"game/IMG_3.DNG"_s, "no picture");
    runFolder(FolderImages::onlyNew);
    EXPECT_TRUE(hasLogged(u"Analyze New Only: Found 3 total files, 0 already in manifest, 3 to process"_s));
    EXPECT_EQ(manifest.count(), 2) << "what has failed stays new";
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
    EXPECT_EQ(reports.size(), 3) << "whatever the manifest knows";
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
    EXPECT_EQ(status.pending(), 1) << "the image that was left alone";
}

TEST_F(FolderSourceTest, OnlyImagesAtTheTopOfTheFolderAreTaken) {
    ASSERT_TRUE(QDir(game).mkpath(u"deeper.jpg"_s));
    jpeg(u"deeper.jpg/IMG_1.JPG"_s);
    jpeg(u"IMG_2.Jpeg"_s);
    jpeg(u".IMG_3.JPG"_s);
    write(u"game/notes.txt"_s, "x");
    settings.setIngestFolder(game + u'/');
    runFolder();
    ASSERT_EQ(reports.size(), 1);
    EXPECT_EQ(reports[0].file, game + u"/IMG_2.Jpeg"_s);
    EXPECT_TRUE(hasLogged(u"[Analyzer] RECAPTION: Found 3 items in folder: "_s));
}

TEST_F(FolderSourceTest, AnImageWhoseNameIsNotUtf8HasFailed) {
    const QByteArray bad = QFile::encodeName(game) + "/bad\xFF.jpg";
    std::FILE* file = std::fopen(bad.constData(), "w");
    ASSERT_NE(file, nullptr);
    std::fclose(file);
    runFolder();
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
}

TEST_F(FolderSourceTest, ARunAndSingleImagesTakeTurns) {
    const QString first = raw(u"IMG_1.DNG"_s);
    const QString second = jpeg(u"IMG_2.JPG"_s);
    const QString elsewhere = rawImage(u"IMG_9.DNG"_s);
    StandInAnswer slow = reply(u"By itself."_s);
    slow.delivery = StandInAnswer::Delivery::held;
    model.enqueue(slow);
    auto early = analyzer.analyzeSingle(first);
    waitUntil([this] { return model.isHolding(); });

    auto folderRun = analyzer.recaptionFolder(FolderImages::all);
    waitUntil([this] { return hasLogged(u"RECAPTION: Using local watch folder"_s); });
    EXPECT_FALSE(turns.hasRun());
    EXPECT_EQ(status.totalFiles(), 1) << "the progress is that of the image in the works";
    model.releaseHeld();
    waitUntil([this] { return turns.hasRun(); });
    EXPECT_EQ(captionOf(first), u"By itself."_s);
    auto again = analyzer.analyzeSingle(second);
    auto late = analyzer.analyzeSingle(elsewhere);
    waitUntil([this] { return status.totalFiles() == 2; });
    clock.advance(std::chrono::seconds(2)); // the early image's progress has been seen for long enough
    EXPECT_TRUE(await(std::move(early)));
    EXPECT_TRUE(status.isProcessing());
    EXPECT_EQ(status.totalFiles(), 2);

    drive(std::move(folderRun));
    EXPECT_NE(captionOf(first), u"By itself."_s) << "the run takes all";
    EXPECT_FALSE(QFileInfo::exists(folder.filePath(u"IMG_9.xmp"_s))) << "the late image waits";
    waitUntil([this] { return reports.size() == 5; });
    clock.advance(std::chrono::seconds(2));
    EXPECT_TRUE(await(std::move(late)));
    EXPECT_TRUE(await(std::move(again)));
    EXPECT_EQ(requestSizes(), (QList<std::pair<qsizetype, int>>{{1, 180}, {2, 2000}, {1, 180}}));
    EXPECT_FALSE(status.isProcessing());
    EXPECT_EQ(status.totalFiles(), 0);
}

} // namespace ostrelle
