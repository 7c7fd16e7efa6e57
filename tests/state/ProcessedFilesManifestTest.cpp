// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/ProcessedFilesManifest.h"

#include "platform/FileLock.h"
#include "platform/Files.h"
#include "support/Await.h"
#include "support/FileFacts.h"
#include "support/RecordingLog.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThreadPool>
#include <algorithm>
#include <chrono>
#include <memory>
#include <vector>

namespace ostrelle {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

class ProcessedFilesManifestTest : public testing::Test {
protected:
    /// Restarts the program with what is stored.
    void start() {
        manifest.reset();
        log.lines.clear();
        manifest = std::make_unique<ProcessedFilesManifest>(path, threads, clock, log, events);
    }
    /// A picture of six bytes from 26 October 2024, 19:02:33.25 UTC.
    QString makePicture(const QString& name) const {
        const QString file = folder.filePath(name);
        QDir().mkpath(QFileInfo(file).path());
        replaceFile(file, "sensor");
        setDate(file, 250'000'000);
        return file;
    }
    static void setDate(const QString& file, long nanoseconds) {
        ostrelle::setDate(file, {.tv_sec = 1'729'969'353, .tv_nsec = nanoseconds});
    }
    void mark(const QString& file) { await(manifest->markProcessed(file)); }
    bool isProcessed(const QString& file) { return await(manifest->isProcessed(file)); }
    QByteArray stored() const { return contentsOf(path); }

    QTemporaryDir folder;
    QString path = folder.filePath(u"share/Ostrelle Captions/processed_files.json"_s);
    FolderThreads threads;
    VirtualClock clock;
    RecordingLog log;
    AppEvents events;
    std::unique_ptr<ProcessedFilesManifest> manifest =
        std::make_unique<ProcessedFilesManifest>(path, threads, clock, log, events);
};

TEST_F(ProcessedFilesManifestTest, AMarkedFileIsKnownToTheNextRun) {
    replaceFile(path, "[{]"); // damaged
    start();
    QSignalSpy updates(&events, &AppEvents::manifestUpdated);
    const QString picture = makePicture(u"a.CR3"_s);
    EXPECT_FALSE(isProcessed(picture));
    EXPECT_FALSE(manifest->isProcessedByName(u"a.CR3"_s));
    mark(picture);
    EXPECT_TRUE(isProcessed(picture));
    EXPECT_TRUE(manifest->isProcessedByName(u"a.CR3"_s));
    EXPECT_FALSE(manifest->isProcessedByName(u"a"_s));
    EXPECT_EQ(updates.count(), 1);
    EXPECT_EQ(stored(), R"([{"fileSize":6,"filename":"a.CR3","modificationDate":751662153.25}])");
    EXPECT_EQ(log.lines,
              QStringList({u"[ProcessedFilesManifest] Starting with empty manifest"_s,
                           u"[ProcessedFilesManifest] Marked as processed: a.CR3 (size: 6, date: 2024-10-26 "
                           "19:02:33 +0000) (total: 1)"_s}));
    start();
    EXPECT_EQ(log.lines, QStringList(u"[ProcessedFilesManifest] Loaded 1 previously processed files"_s));
    EXPECT_TRUE(isProcessed(picture));
}

TEST_F(ProcessedFilesManifestTest, AFileIsKnownByNameSizeAndDate) {
    const QString picture = makePicture(u"a.CR3"_s);
    const QString twin = makePicture(u"elsewhere/a.CR3"_s);
    const QString link = folder.filePath(u"linked/a.CR3"_s);
    ASSERT_TRUE(QDir(folder.path()).mkdir(u"linked"_s));
    ASSERT_TRUE(QFile::link(picture, link));
    mark(picture);
    EXPECT_TRUE(isProcessed(twin));
    EXPECT_TRUE(isProcessed(link));
    EXPECT_FALSE(isProcessed(makePicture(u"A.CR3"_s)));
    setDate(picture, 250'001'000);
    EXPECT_FALSE(isProcessed(picture)) << "touched";
    EXPECT_FALSE(isProcessed(link)) << "touched";
    replaceFile(twin, "sensors");
    setDate(twin, 250'000'000);
    EXPECT_FALSE(isProcessed(twin)) << "another size";
    ASSERT_TRUE(QFile::remove(twin));
    EXPECT_TRUE(isProcessed(twin)) << "the file is gone, so its name decides";
    EXPECT_FALSE(isProcessed(folder.filePath(u"other.CR3"_s)));
}

TEST_F(ProcessedFilesManifestTest, AFileMarkedAgainIsAddedOnceForEachOfItsStates) {
    const QString picture = makePicture(u"a.CR3"_s);
    mark(picture);
    mark(picture);
    EXPECT_EQ(manifest->count(), 1);
    setDate(picture, 0);
    mark(picture);
    EXPECT_EQ(manifest->count(), 2);
    EXPECT_TRUE(log.lines.last().endsWith(u"(total: 2)"_s));
}

TEST_F(ProcessedFilesManifestTest, AFileThatIsGoneIsMarkedByItsName) {
    const QString picture = folder.filePath(u"gone.CR3"_s);
    mark(picture);
    EXPECT_TRUE(isProcessed(picture));
    EXPECT_EQ(stored(), R"([{"fileSize":0,"filename":"gone.CR3","modificationDate":751636800}])");
    EXPECT_EQ(
        log.lines.mid(1),
        QStringList({u"[ProcessedFilesManifest] Warning: Could not read file attributes for gone.CR3, "
                     "using filename only"_s,
                     u"[ProcessedFilesManifest] Marked as processed: gone.CR3 (size: 0, date: 2024-10-26 "
                     "12:00:00 +0000) (total: 1)"_s}));
    makePicture(u"gone.CR3"_s);
    EXPECT_FALSE(isProcessed(picture));
}

TEST_F(ProcessedFilesManifestTest, AFailedSaveIsLoggedAndTheNextOneWritesEverything) {
    ASSERT_TRUE(QDir().mkdir(path)); // where the file should be
    ASSERT_TRUE(QDir().mkdir(path + u".lock"_s));
    mark(makePicture(u"a.CR3"_s));
    ASSERT_EQ(log.lines.size(), 3);
    EXPECT_TRUE(log.lines[1].startsWith(u"[ProcessedFilesManifest] Error saving manifest: Could not lock "_s))
        << log.lines[1].toStdString();
    EXPECT_TRUE(log.lines[2].startsWith(u"[ProcessedFilesManifest] Marked as processed: a.CR3 "_s));
    EXPECT_TRUE(manifest->isProcessedByName(u"a.CR3"_s));
    ASSERT_TRUE(QDir().rmdir(path));
    ASSERT_TRUE(QDir().rmdir(path + u".lock"_s));
    mark(makePicture(u"b.CR3"_s));
    start();
    EXPECT_EQ(manifest->count(), 2);
}

TEST_F(ProcessedFilesManifestTest, MarksDuringASaveShareTheNextOne) {
    QThreadPool::globalInstance()->setMaxThreadCount(2); // the waiting save takes one, on any machine
    QSignalSpy updates(&events, &AppEvents::manifestUpdated);
    const int watch = ::inotify_init1(IN_NONBLOCK);
    // IN_CREATE keeps the renames apart: the kernel merges equal events in a row.
    const QByteArray watched = QFileInfo(path).path().toLocal8Bit();
    ASSERT_GE(::inotify_add_watch(watch, watched.constData(), IN_CREATE | IN_MOVED_TO), 0);
    constexpr int count = 50;
    std::vector<QCoro::Task<>> marks;
    {
        const FileLock anotherProcess(path, 1s);
        for (int number = 0; number < count; ++number) {
            marks.push_back(manifest->markProcessed(makePicture(u"%1.CR3"_s.arg(number))));
        }
        waitUntil([this] { return manifest->count() == count; });
        EXPECT_FALSE(QFile::exists(path));
    }
    for (QCoro::Task<>& task : marks) {
        await(std::move(task));
    }
    QByteArray reported(65536, '\0'); // the events, each with its file name
    reported.resize(std::max<ssize_t>(::read(watch, reported.data(), 65536), 0));
    ::close(watch);
    EXPECT_EQ(reported.count(QByteArrayView("processed_files.json\0", 21)), 2) << "renames over the file";
    EXPECT_EQ(updates.count(), count);
    start();
    EXPECT_EQ(manifest->count(), count);
}

TEST_F(ProcessedFilesManifestTest, LearnsWhatAnotherProcessHasMarkedWhenItSavesOrRefreshes) {
    mark(makePicture(u"a.CR3"_s));
    RecordingLog otherLog;
    ProcessedFilesManifest other(path, threads, clock, otherLog, events);
    await(other.markProcessed(makePicture(u"b.CR3"_s)));
    EXPECT_FALSE(manifest->isProcessedByName(u"b.CR3"_s));
    mark(makePicture(u"c.CR3"_s));
    EXPECT_TRUE(isProcessed(folder.filePath(u"b.CR3"_s)));
    QSignalSpy updates(&events, &AppEvents::manifestUpdated);
    await(other.refresh());
    EXPECT_TRUE(other.isProcessedByName(u"c.CR3"_s));
    await(other.refresh()); // nothing new
    EXPECT_EQ(updates.count(), 1);
    start();
    EXPECT_EQ(manifest->count(), 3);
}

TEST_F(ProcessedFilesManifestTest, MarksUnderWayOutliveTheManifest) {
    const QString picture = makePicture(u"a.CR3"_s);
    auto marking = manifest->markProcessed(picture);
    auto later = manifest->markProcessed(makePicture(u"b.CR3"_s));
    auto asking = manifest->isProcessed(picture);
    manifest.reset();
    const qsizetype lines = log.lines.size();
    await(std::move(marking));
    await(std::move(later));
    await(std::move(asking));
    EXPECT_EQ(log.lines.size(), lines);
    start();
    EXPECT_EQ(manifest->count(), 2);
}

} // namespace

} // namespace ostrelle
