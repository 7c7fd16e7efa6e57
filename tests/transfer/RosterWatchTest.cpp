// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/RosterWatch.h"

#include "platform/PathReferences.h"
#include "standins/MemoryDefaults.h"
#include "standins/MemorySecrets.h"
#include "support/Await.h"
#include "support/RecordingLog.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtConcurrentRun>

namespace ostrelle {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

class RosterWatchTest : public testing::Test {
protected:
    RosterWatchTest() {
        EXPECT_TRUE(QDir(folder.path()).mkpath(u"other"_s));
        settings.setIngestFolder(folder.path());
    }

    void putRoster(const QString& path) const {
        QFile file(folder.filePath(path));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    }
    /// Makes the folder hang until the semaphore is released.
    void hang(const QString& path, QSemaphore& semaphore) {
        hung = QtConcurrent::run(threads.of(path), [&semaphore] { semaphore.acquire(); });
    }

    QTemporaryDir folder;
    MemoryDefaults defaults;
    MemorySecrets secrets;
    PathReferences references;
    RecordingLog console;
    VirtualClock clock;
    KeychainHelper keychain{secrets, console};
    SettingsStore settings{defaults, keychain, references, console};
    FolderThreads threads;
    QFuture<void> hung;
};

} // namespace

TEST_F(RosterWatchTest, ARosterThatIsPutThereIsFound) {
    RosterWatch watch(settings, threads, clock);
    EXPECT_FALSE(await(watch.found()));
    putRoster(u"codereplacements.txt"_s);
    QSignalSpy changes(&watch, &RosterWatch::foundChanged);
    watch.lookAgain();
    waitUntil([&watch] { return watch.isFound(); });
    EXPECT_TRUE(watch.isUsed());
    settings.setCodeReplacementsFile(folder.filePath(u"another.txt"_s));
    EXPECT_FALSE(watch.isUsed());
    settings.setCodeReplacementsFile(std::nullopt);
    settings.setSourceType(SourceType::ftp);
    EXPECT_FALSE(watch.isUsed());
    settings.setSourceType(SourceType::local);
    EXPECT_TRUE(QFile::remove(folder.filePath(u"codereplacements.txt"_s)));
    EXPECT_FALSE(await(watch.found()));
    EXPECT_EQ(changes.size(), 2);
}

TEST_F(RosterWatchTest, WhatIsFoundIsTrueOfTheFolderOfTheSettings) {
    putRoster(u"code-replacements.txt"_s);
    RosterWatch watch(settings, threads, clock);
    EXPECT_TRUE(await(watch.found()));
    settings.setIngestFolder(folder.filePath(u"other"_s));
    EXPECT_FALSE(watch.isFound());
    putRoster(u"other/code_replacements.txt"_s);
    EXPECT_TRUE(await(watch.found()));
    settings.setIngestFolder(std::nullopt);
    EXPECT_FALSE(watch.isFound());
    EXPECT_FALSE(await(watch.found()));
}

TEST_F(RosterWatchTest, WhatIsWrongWithTheRosterInUseIsToldAndForgottenWhenItIsMended) {
    putRoster(u"code-replacements.txt"_s); // an empty one
    RosterWatch watch(settings, threads, clock);
    const auto saysOf = [&watch](const QString& name) {
        waitUntil([&] { return watch.problem().contains(name); });
    };
    saysOf(u"code-replacements.txt"_s);
    settings.setCodeReplacementsFile(folder.filePath(u"missing.txt"_s));
    saysOf(u"missing.txt"_s);
    settings.setCodeReplacementsFile(folder.filePath(u"chosen.txt"_s));
    EXPECT_FALSE(watch.problem().contains(u"missing.txt"_s)) << "what is known of another file";
    saysOf(u"chosen.txt"_s);
    QFile chosen(folder.filePath(u"chosen.txt"_s));
    ASSERT_TRUE(chosen.open(QIODevice::WriteOnly));
    chosen.write("12\tJohn Smith\n");
    chosen.close();
    watch.lookAgain();
    waitUntil([&watch] { return watch.problem().isEmpty(); });
    settings.setCodeReplacementsFile(std::nullopt);
    EXPECT_TRUE(watch.problem().contains(u"code-replacements.txt"_s));
}

TEST_F(RosterWatchTest, AFolderThatHangsHoldsNobodyUp) {
    QSemaphore semaphore;
    putRoster(u"code-replacements.txt"_s);
    RosterWatch watch(settings, threads, clock);
    EXPECT_TRUE(await(watch.found()));
    hang(folder.path(), semaphore);
    bool answer = false;
    bool isAnswered = false;
    const auto ask = [](RosterWatch* watch, bool* answer, bool* isAnswered) -> QCoro::Task<> {
        *answer = co_await watch->found();
        *isAnswered = true;
    };
    const QCoro::Task<> asked = ask(&watch, &answer, &isAnswered);
    EXPECT_FALSE(isAnswered);
    clock.advance(RosterWatch::patience);
    waitUntil([&isAnswered] { return isAnswered; });
    EXPECT_TRUE(answer); // as it last was
    settings.setCodeReplacementsFile(folder.filePath(u"code-replacements.txt"_s));
    EXPECT_TRUE(await(watch.found())); // without any time passing
    semaphore.release();
}

TEST_F(RosterWatchTest, ALateAnswerAboutAnotherFolderDoesNotCount) {
    QSemaphore semaphore;
    putRoster(u"code-replacements.txt"_s);
    hang(folder.path(), semaphore);
    RosterWatch watch(settings, threads, clock);
    settings.setIngestFolder(folder.filePath(u"other"_s));
    EXPECT_FALSE(await(watch.found()));
    QSignalSpy changes(&watch, &RosterWatch::foundChanged);
    semaphore.release();
    threads.of(folder.path())->waitForDone();
    EXPECT_FALSE(await(watch.found()));
    EXPECT_TRUE(changes.isEmpty());
}

TEST_F(RosterWatchTest, ALookOutlivesTheWatch) {
    QSemaphore semaphore;
    hang(folder.path(), semaphore);
    auto watch = std::make_unique<RosterWatch>(settings, threads, clock);
    const QCoro::Task<bool> asked = watch->found();
    watch.reset();
    semaphore.release();
    waitUntil([&asked] { return asked.isReady(); });
}

} // namespace ostrelle
