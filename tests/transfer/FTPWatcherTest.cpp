// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/remote/FTPWatcher.h"

#include "standins/MemoryDefaults.h"
#include "support/Await.h"
#include "support/RecordingLog.h"
#include "support/VirtualClock.h"
#include "transfer/FolderClient.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace ostrelle {

using namespace Qt::StringLiterals;
using std::chrono::seconds;

namespace {

class FTPWatcherTest : public testing::Test {
protected:
    FTPWatcherTest() {
        qputenv("XDG_DATA_HOME", home.path().toUtf8()); // of the trash
        QObject::connect(&status, &StatusStore::ftpStatusMessageChanged, &status,
                         [this] { texts.append(status.ftpStatusMessage().value_or(QString())); });
    }
    ~FTPWatcherTest() override { qunsetenv("XDG_DATA_HOME"); }

    std::unique_ptr<FTPWatcher> watcher() {
        return std::make_unique<FTPWatcher>(std::make_unique<FolderClient>(remote), folder.path(),
                                            FTPWatcherParts{.status = status,
                                                            .manifest = manifest,
                                                            .ledger = *ledger,
                                                            .fetched = fetched,
                                                            .claims = claims,
                                                            .clock = clock,
                                                            .log = log,
                                                            .access = access,
                                                            .threads = threads});
    }
    NewFiles keeper() {
        return [this](const QStringList& images) {
            ++handings;
            handed.clear();
            for (const QString& image : images) {
                handed.append(QFileInfo(image).fileName());
            }
        };
    }
    /// One poll of a watcher.
    void poll(FTPWatcher& ftp) {
        texts.clear();
        remote.calls.clear();
        ftp.start(seconds(10), keeper());
        await(ftp.finished());
    }
    void poll() {
        const auto ftp = watcher();
        poll(*ftp);
        ftp->stop();
    }
    void pollAgain() {
        remote.calls.clear();
        clock.advance(seconds(10));
        await(current->finished());
    }
    void put(const QString& name, const QByteArray& bytes) const {
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    QByteArray local(const QString& name) const {
        QFile file(folder.filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("none");
    }
    void markCaptioned(const QString& name) {
        put(name, "captioned");
        await(manifest.markProcessed(folder.filePath(name)));
    }
    QStringList filesInFolder() const {
        return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }

    QTemporaryDir folder;
    QTemporaryDir home;
    VirtualClock clock;
    RecordingLog log;
    MemoryDefaults defaults;
    StatusStore status{defaults, clock};
    UnsandboxedAccess access;
    FolderThreads threads;
    AppEvents events;
    ProcessedFilesManifest manifest{home.filePath(u"manifest.json"_s), threads, clock, log, events};
    std::unique_ptr<FetchLedger> ledger = std::make_unique<FetchLedger>(clock);
    FetchedImages fetched{defaults};
    ImageClaims claims{home.filePath(u"claims"_s)};
    RemoteFolder remote;
    std::unique_ptr<FTPWatcher> current;
    QStringList texts;
    QStringList handed;
    int handings = 0;
};

} // namespace

TEST_F(FTPWatcherTest, FetchesSidecarsFirstAndHandsTheImagesOn) {
    remote.files = {{u"IMG_1.CR2"_s, {"raw 1"}},
                    {u"IMG_1.xmp"_s, {"sidecar"}},
                    {u"IMG_2.jpg"_s, {"jpeg"}},
                    {u"a.txt"_s, {"?"}}};
    poll();
    EXPECT_EQ(remote.calls, QStringList({u"list"_s, u"wait for IMG_1.xmp IMG_1.CR2 IMG_2.jpg"_s, u"list"_s,
                                         u"IMG_1.xmp"_s, u"IMG_1.CR2"_s, u"IMG_2.jpg"_s}));
    EXPECT_EQ(texts,
              QStringList({u"Checking FTP server..."_s,
                           u"Found 2 new image files and 1 new metadata file. Downloading 0/3..."_s,
                           u"Waiting for batch to finish uploading..."_s,
                           u"Found 2 new image files and 1 new metadata file. Downloading 1/3..."_s,
                           u"Found 2 new image files and 1 new metadata file. Downloading 2/3..."_s,
                           u"Found 2 new image files and 1 new metadata file. Downloading 3/3..."_s,
                           u"Downloaded 2 new image files and 1 new metadata file. All caught up!"_s}));
    EXPECT_EQ(handed, QStringList({u"IMG_1.CR2"_s, u"IMG_2.jpg"_s}));
    EXPECT_EQ(filesInFolder(), QStringList({u"IMG_1.CR2"_s, u"IMG_1.xmp"_s, u"IMG_2.jpg"_s}));
    EXPECT_EQ(local(u"IMG_1.xmp"_s), "sidecar");
    EXPECT_EQ(status.ftpFilesFound(), 2);
    EXPECT_EQ(status.ftpFilesDownloaded(), 3);
    EXPECT_EQ(status.ftpImagesDownloaded(), 2);
    EXPECT_EQ(status.ftpMetadataDownloaded(), 1);
    EXPECT_EQ(status.ftpBytesDownloaded(), 16);
    EXPECT_EQ(status.ftpDownloadProgress(), 1.0);
    EXPECT_FALSE(status.ftpIsChecking() || status.ftpIsDownloading());
    EXPECT_TRUE(log.has(u"Skipped non-image files:\na.txt (ext: txt)"_s));
    poll();
    EXPECT_EQ(remote.calls, QStringList{u"list"_s});
    EXPECT_EQ(texts.last(), u"No new files"_s);
    EXPECT_EQ(handings, 2);
    EXPECT_TRUE(handed.isEmpty());
}

TEST_F(FTPWatcherTest, SaysHowAPollWithoutImagesEnds) {
    poll();
    EXPECT_EQ(texts.last(), u"Directory is empty"_s);
    EXPECT_EQ(handings, 1);
    remote.files = {{u"IMG_1.xmp"_s, {"sidecar"}}};
    poll();
    EXPECT_EQ(texts.last(), u"No new files"_s);
    EXPECT_EQ(local(u"IMG_1.xmp"_s), "sidecar");
    remote.files = {{u"IMG_1.jpg"_s, {"jpeg"}}};
    remote.isStable = false;
    poll();
    EXPECT_EQ(texts.last(), u"Batch upload incomplete, will retry"_s);
    EXPECT_EQ(handings, 2);
    remote.isReachable = false;
    poll();
    EXPECT_EQ(texts.last(), u"Error: Cannot open FTP stream"_s);
    EXPECT_EQ(handings, 2);
    status.setIsProcessing(true);
    poll();
    EXPECT_TRUE(remote.calls.isEmpty());
}

TEST_F(FTPWatcherTest, ACaptionedLocalCopyIsNeverReplaced) {
    for (const QString& name : {u"IMG_1.CR2"_s, u"IMG_2.RAF"_s, u"IMG_3.CR2"_s}) {
        markCaptioned(name);
    }
    put(u"IMG_1.xmp"_s, "caption 1");
    put(u"IMG_2.xmp"_s, "<x>caption 2</x>");
    ASSERT_TRUE(QFile::remove(folder.filePath(u"IMG_3.CR2"_s)));
    remote.files = {{u"IMG_1.CR2"_s, {"another size"}},
                    {u"IMG_1.xmp"_s, {"another"}},
                    {u"IMG_2.xmp"_s, {"new"}},
                    {u"IMG_3.CR2"_s, {"again"}}};
    poll();
    EXPECT_EQ(local(u"IMG_1.CR2"_s), "captioned");
    EXPECT_EQ(local(u"IMG_1.xmp"_s), "caption 1");
    EXPECT_EQ(local(u"IMG_2.xmp"_s), "new") << "sidecars of RAF images are protected by their size alone";
    EXPECT_EQ(local(u"IMG_3.CR2"_s), "again") << "it was gone";
    EXPECT_EQ(handed, QStringList{u"IMG_3.CR2"_s});
    const QString trash = home.filePath(u"Trash/files/IMG_2.xmp"_s);
    EXPECT_TRUE(QFile::exists(trash) || QFile::exists(folder.filePath(u"IMG_2.xmp.replaced"_s)));
    EXPECT_EQ(status.ftpRemarks(), QStringList{u"Captioned before, not fetched: IMG_1.CR2"_s});
}

TEST_F(FTPWatcherTest, HalfASidecarIsReplacedWithoutATrace) {
    put(u"IMG_1.xmp"_s, "<x><y>");
    remote.files = {{u"IMG_1.xmp"_s, {"<x><y/></x>"}}};
    poll();
    EXPECT_EQ(local(u"IMG_1.xmp"_s), "<x><y/></x>");
    EXPECT_FALSE(QFile::exists(home.filePath(u"Trash/files/IMG_1.xmp"_s)));
    EXPECT_FALSE(QFile::exists(folder.filePath(u"IMG_1.xmp.replaced"_s)));
}

TEST_F(FTPWatcherTest, ACaptionThatIsWrittenWhileAFileComesIsNotReplaced) {
    put(u"IMG_1.xmp"_s, "old");
    put(u"IMG_1.CR2"_s, "raw");
    put(u"IMG_2.jpg"_s, "half");
    remote.files = {{u"IMG_1.xmp"_s, {"of the server"}}, {u"IMG_2.jpg"_s, {"the whole"}}};
    std::shared_ptr<const ImageClaim> claim;
    remote.onDownload = [&](const QString& name) {
        if (name == u"IMG_1.xmp") {
            put(u"IMG_1.xmp"_s, "caption");
            await(manifest.markProcessed(folder.filePath(u"IMG_1.CR2"_s)));
        } else {
            claim = claims.tryClaim(folder.filePath(name)); // as of another program that is at it
        }
    };
    poll();
    EXPECT_EQ(local(u"IMG_1.xmp"_s), "caption");
    EXPECT_EQ(local(u"IMG_2.jpg"_s), "half");
    EXPECT_EQ(status.ftpRemarks(), QStringList{u"Could not fetch IMG_2.jpg, will try again."_s});
    EXPECT_EQ(filesInFolder().size(), 3) << "no part is left";
}

TEST_F(FTPWatcherTest, AShortFileNeverGetsItsName) {
    remote.files = {{u"IMG_1.jpg"_s, {.bytes = "whole", .sent = "who"}},
                    {u"IMG_2.jpg"_s, {"jpeg"}},
                    {u"IMG_3.jpg"_s, {""}}};
    current = watcher();
    poll(*current);
    EXPECT_EQ(filesInFolder(), QStringList{u"IMG_2.jpg"_s});
    EXPECT_EQ(handed, QStringList{u"IMG_2.jpg"_s});
    EXPECT_EQ(texts.last(), u"Downloaded 1 new image file."_s);
    EXPECT_EQ(status.ftpRemarks(), QStringList{u"Could not fetch IMG_1.jpg, will try again."_s});
    EXPECT_TRUE(log.has(u"[FTPWatcher] Could not fetch IMG_1.jpg: Only 3 of 5 bytes arrived."_s));
    remote.files[u"IMG_1.jpg"_s].sent.clear();
    pollAgain();
    EXPECT_EQ(remote.calls, QStringList{u"list"_s}) << "it is set aside";
    remote.files[u"IMG_1.jpg"_s].bytes = "longer";
    pollAgain();
    EXPECT_EQ(local(u"IMG_1.jpg"_s), "longer") << "it has another size";
    EXPECT_EQ(handed, QStringList{u"IMG_1.jpg"_s});
}

TEST_F(FTPWatcherTest, FilesThatFailDoNotHoldUpTheOthers) {
    for (int number = 1; number <= 7; ++number) {
        remote.files[u"IMG_%1.jpg"_s.arg(number)] = {.bytes = "jpeg", .failures = number < 7 ? 100 : 0};
    }
    current = watcher();
    poll(*current);
    EXPECT_EQ(handed, QStringList{u"IMG_7.jpg"_s});
    EXPECT_EQ(status.ftpRemarks(), QStringList{u"Could not fetch IMG_1.jpg, IMG_2.jpg, IMG_3.jpg and 3 more, "
                                               "will try again."_s});
}

TEST_F(FTPWatcherTest, AnImageThatGrowsOnTheServerIsHandedOnAgain) {
    remote.files = {{u"IMG_1.jpg"_s, {"half"}}};
    current = watcher();
    poll(*current);
    remote.files[u"IMG_1.jpg"_s].bytes = "the whole";
    pollAgain();
    EXPECT_EQ(handed, QStringList{u"IMG_1.jpg"_s});
    EXPECT_EQ(local(u"IMG_1.jpg"_s), "the whole");
    pollAgain();
    EXPECT_EQ(handed, QStringList());
}

TEST_F(FTPWatcherTest, AnImageWaitsOnceForASidecarThatFails) {
    remote.files = {{u"IMG_1.xmp"_s, {.bytes = "sidecar", .failures = 2}}, {u"IMG_1.jpg"_s, {"jpeg"}}};
    current = watcher();
    poll(*current);
    EXPECT_EQ(filesInFolder(), QStringList());
    pollAgain();
    EXPECT_EQ(filesInFolder(), QStringList()) << "the sidecar is set aside";
    clock.advance(seconds(50));
    pollAgain();
    EXPECT_EQ(filesInFolder(), QStringList{u"IMG_1.jpg"_s}) << "it may never come";
}

TEST_F(FTPWatcherTest, WhatWasFetchedAndNotHandedOnIsNotForgotten) {
    for (int number = 1; number <= 4; ++number) {
        remote.files[u"IMG_%1.jpg"_s.arg(number)] = {.bytes = "jpeg", .failures = number == 1 ? 0 : 1};
    }
    remote.onDownload = [&](const QString& name) { remote.isReachable = name != u"IMG_4.jpg"; };
    current = watcher();
    poll(*current);
    EXPECT_EQ(texts.last(), u"Error: Cannot open FTP stream"_s) << "three failures in a row";
    EXPECT_EQ(handings, 0);
    remote.onDownload = nullptr;
    remote.isReachable = true;
    remote.files.erase(u"IMG_1.jpg"_s);
    remote.files[u"IMG_5.jpg"_s] = {"jpeg"};
    put(u"IMG_9.jpg"_s, "of somebody else");
    pollAgain();
    EXPECT_EQ(handed, QStringList({u"IMG_1.jpg"_s, u"IMG_5.jpg"_s})) << "the server has it no more";
    clock.advance(seconds(50));
    pollAgain();
    EXPECT_EQ(handed, QStringList({u"IMG_2.jpg"_s, u"IMG_3.jpg"_s, u"IMG_4.jpg"_s})) << "a minute later";

    fetched.remove(folder.filePath(u"IMG_2.jpg"_s)); // captioned
    await(manifest.markProcessed(folder.filePath(u"IMG_3.jpg"_s)));
    QFile old(folder.filePath(u"IMG_4.jpg"_s));
    ASSERT_TRUE(old.open(QIODevice::ReadWrite));
    ASSERT_TRUE(old.setFileTime(clock.now().addSecs(-13 * 3600), QFileDevice::FileModificationTime));
    ASSERT_TRUE(QFile::remove(folder.filePath(u"IMG_1.jpg"_s)));
    remote.files.clear();
    current->stop();
    ledger = std::make_unique<FetchLedger>(clock); // the next start
    poll();
    EXPECT_EQ(handed, QStringList({u"IMG_5.jpg"_s})) << "it is captioned, gone, or of another game";
    EXPECT_EQ(fetched.namesIn(folder.path()), handed);
}

TEST_F(FTPWatcherTest, PartsOfFilesOfAKilledProgramAreRemoved) {
    const QString part = u".IMG_1.jpg.ostrelle-0123456789abc"_s;
    put(part, "par");
    QFile file(folder.filePath(part));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(
        file.setFileTime(QDateTime::currentDateTime().addSecs(-120), QFileDevice::FileModificationTime));
    file.close();
    poll();
    EXPECT_FALSE(file.exists());
}

TEST_F(FTPWatcherTest, AStoppedWatcherBeginsNoFurtherFile) {
    remote.files = {{u"IMG_1.jpg"_s, {"jpeg"}}, {u"IMG_2.jpg"_s, {"jpeg"}}};
    const auto first = watcher();
    const auto second = watcher();
    remote.onDownload = [&](const QString&) {
        first->stop();
        second->start(seconds(10), keeper());
    };
    poll(*first);
    EXPECT_EQ(remote.calls.last(), u"IMG_1.jpg"_s);
    EXPECT_EQ(local(u"IMG_1.jpg"_s), "jpeg");
    EXPECT_EQ(status.ftpStatusMessage(), std::nullopt);
    EXPECT_TRUE(log.has(u"[FTPWatcher] Skipping poll - download/processing already in progress"_s));
    EXPECT_EQ(handings, 0);
    remote.onDownload = nullptr;
    clock.advance(seconds(10));
    await(second->finished());
    EXPECT_EQ(handed, QStringList({u"IMG_1.jpg"_s, u"IMG_2.jpg"_s}));
    second->stop();
}

TEST_F(FTPWatcherTest, AFullDownloadFetchesWhatDiffersAndKeepsTheOld) {
    markCaptioned(u"IMG_1.jpg"_s);
    put(u"IMG_2.jpg"_s, "same");
    markCaptioned(u"IMG_3.RAF"_s);
    put(u"IMG_3.xmp"_s, "the caption of the RAF");
    remote.files = {{u"IMG_1.jpg"_s, {"of the server"}},
                    {u"IMG_2.jpg"_s, {"SAME"}},
                    {u"IMG_3.RAF"_s, {"captioned"}},
                    {u"IMG_3.xmp"_s, {"sidecar"}}};
    const auto ftp = watcher();
    await(ftp->downloadAllFiles(keeper()));
    EXPECT_EQ(remote.calls, QStringList({u"list"_s, u"IMG_1.jpg"_s})) << "it waits for nothing";
    EXPECT_EQ(local(u"IMG_1.jpg"_s), "of the server");
    EXPECT_EQ(local(u"IMG_2.jpg"_s), "same");
    EXPECT_EQ(local(u"IMG_3.xmp"_s), "the caption of the RAF") << "nothing would write it again";
    EXPECT_EQ(handed, QStringList{u"IMG_1.jpg"_s});
    EXPECT_EQ(texts.first(), u"Downloading all files from FTP server..."_s);
    EXPECT_TRUE(QFile::exists(home.filePath(u"Trash/files/IMG_1.jpg"_s)) ||
                QFile::exists(folder.filePath(u"IMG_1.jpg.replaced"_s)));
    await(ftp->downloadAllFiles(keeper()));
    EXPECT_EQ(handings, 1);
    EXPECT_EQ(texts.last(), u"No new files"_s);
    remote.isReachable = false;
    await(ftp->downloadAllFiles(keeper()));
    EXPECT_EQ(texts.last(), u"Error: Cannot open FTP stream"_s);
    EXPECT_TRUE(status.sourceTrouble());
    remote.isReachable = true;
    await(ftp->downloadAllFiles(keeper()));
    EXPECT_FALSE(status.sourceTrouble());
}

} // namespace ostrelle
