// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/RosterWatch.h"

#include "pipeline/PipelineFixture.h"
#include "support/HangingThreads.h"

#include <QSignalSpy>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

class RosterWatchTest : public PipelineTest {
protected:
    RosterWatchTest() {
        folderWith(u"other"_s);
        settings.setCodeReplacementsFile(std::nullopt);
        settings.setIngestFolder(folder.path());
    }

    void putRoster(const QString& name) const { write(name, ""); }
    QThreadPool* readers() { return threads.of(folder.path()); }
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
    settings.setCodeReplacementsFile(path(u"another.txt"_s));
    EXPECT_FALSE(watch.isUsed());
    settings.setCodeReplacementsFile(std::nullopt);
    settings.setSourceType(SourceType::ftp);
    EXPECT_FALSE(watch.isUsed());
    settings.setSourceType(SourceType::local);
    EXPECT_TRUE(QFile::remove(path(u"codereplacements.txt"_s)));
    EXPECT_FALSE(await(watch.found()));
    EXPECT_EQ(changes.size(), 2);
}

TEST_F(RosterWatchTest, WhatIsFoundIsTrueOfTheFolderOfTheSettings) {
    putRoster(u"code-replacements.txt"_s);
    RosterWatch watch(settings, threads, clock);
    EXPECT_TRUE(await(watch.found()));
    settings.setIngestFolder(path(u"other"_s));
    EXPECT_FALSE(watch.isFound());
    putRoster(u"other/code_replacements.txt"_s);
    EXPECT_TRUE(await(watch.found()));
    settings.setIngestFolder(std::nullopt);
    EXPECT_FALSE(watch.isFound());
    EXPECT_FALSE(await(watch.found()));
}

TEST_F(RosterWatchTest, WhatIsWrongWithTheRosterInUseIsToldAndForgottenWhenItIsMended) {
    putRoster(u"code-replacements.txt"_s); // empty
    RosterWatch watch(settings, threads, clock);
    const auto saysOf = [&watch](const QString& name) {
        waitUntil([&] { return watch.problem().contains(name); });
    };
    saysOf(u"code-replacements.txt"_s);
    settings.setCodeReplacementsFile(path(u"missing.txt"_s));
    saysOf(u"missing.txt"_s);
    settings.setCodeReplacementsFile(path(u"chosen.txt"_s));
    EXPECT_FALSE(watch.problem().contains(u"missing.txt"_s)) << "the problem was another file's";
    saysOf(u"chosen.txt"_s);
    write(u"chosen.txt"_s, "12\tJohn Smith\n");
    watch.lookAgain();
    waitUntil([&watch] { return watch.problem().isEmpty(); });
    settings.setCodeReplacementsFile(std::nullopt);
    EXPECT_TRUE(watch.problem().contains(u"code-replacements.txt"_s));
}

TEST_F(RosterWatchTest, AFolderThatHangsHoldsNobodyUp) {
    putRoster(u"code-replacements.txt"_s);
    RosterWatch watch(settings, threads, clock);
    EXPECT_TRUE(await(watch.found()));
    HangingThreads share(readers());
    auto asked = watch.found();
    QCoreApplication::processEvents();
    EXPECT_FALSE(asked.isReady());
    clock.advance(RosterWatch::patience);
    EXPECT_TRUE(await(std::move(asked))) << "the last known answer";
    settings.setCodeReplacementsFile(path(u"code-replacements.txt"_s));
    EXPECT_TRUE(await(watch.found())); // without any time passing
    share.recover();
}

TEST_F(RosterWatchTest, ALateAnswerAboutAnotherFolderDoesNotCount) {
    putRoster(u"code-replacements.txt"_s);
    HangingThreads share(readers());
    RosterWatch watch(settings, threads, clock);
    settings.setIngestFolder(path(u"other"_s));
    EXPECT_FALSE(await(watch.found()));
    QSignalSpy changes(&watch, &RosterWatch::foundChanged);
    share.recover();
    readers()->waitForDone();
    EXPECT_FALSE(await(watch.found()));
    EXPECT_TRUE(changes.isEmpty());
}

TEST_F(RosterWatchTest, ALookOutlivesTheWatch) {
    HangingThreads share(readers());
    auto watch = std::make_unique<RosterWatch>(settings, threads, clock);
    const QCoro::Task<bool> asked = watch->found();
    watch.reset();
    share.recover();
    waitUntil([&asked] { return asked.isReady(); });
}

} // namespace ostrelle
