// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SingleInstance.h"

#include "app/Arguments.h"
#include "app/EndingInstance.h"
#include "support/Await.h"
#include "support/FileFacts.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTimer>
#include <QtConcurrentRun>
#include <memory>
#include <optional>
#include <vector>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

using Standing = SingleInstance::Standing;

/// Claims on another thread: claim() blocks until the first instance answers from this event loop.
Standing claimElsewhere(const QString& folder, const QStringList& files = {}) {
    QFuture<Standing> claim =
        QtConcurrent::run([folder, files] { return SingleInstance(folder, files).claim(); });
    waitUntil([&claim] { return claim.isFinished(); });
    return claim.result();
}

} // namespace

TEST(SingleInstance, ASecondStartBringsTheFirstToTheFrontAndEnds) {
    const QTemporaryDir folder;
    SingleInstance first(folder.filePath(u"config"_s));
    ASSERT_EQ(first.claim(), Standing::first);
    int knocks = 0;
    QObject::connect(&first, &SingleInstance::startedAgain, &first, [&knocks] { ++knocks; });
    EXPECT_EQ(claimElsewhere(folder.filePath(u"config"_s)), Standing::second);
    waitUntil([&knocks] { return knocks == 1; });
    SingleInstance elsewhere(folder.filePath(u"another home"_s));
    EXPECT_EQ(elsewhere.claim(), Standing::first);
}

TEST(SingleInstance, ASecondStartHandsItsFilesToTheFirst) {
    const QTemporaryDir folder;
    SingleInstance first(folder.path());
    ASSERT_EQ(first.claim(), Standing::first);
    QStringList given;
    QObject::connect(&first, &SingleInstance::filesGiven, &first,
                     [&](const QStringList& files) { given = files; });
    const QStringList files{u"/photos/a b.jpg"_s, u"/photos/line\nbreak ü.jpg"_s};
    EXPECT_EQ(claimElsewhere(folder.path(), files), Standing::second);
    waitUntil([&] { return !given.isEmpty(); });
    EXPECT_EQ(given, files);
    given.clear();
    EXPECT_EQ(claimElsewhere(folder.path(), {QString(2'000'000, u'x')}), Standing::second);
    EXPECT_EQ(claimElsewhere(folder.path(), files), Standing::second);
    waitUntil([&] { return !given.isEmpty(); });
    EXPECT_EQ(given, files) << "too long a message is dropped whole";
}

TEST(Arguments, NameFilesOrAskForWords) {
    const auto of = [](std::vector<const char*> words) {
        words.insert(words.begin(), "ostrelle-captions");
        const int count = static_cast<int>(words.size());
        if (const std::optional<int> status = answerArguments(count, words.data())) {
            return u"status %1"_s.arg(*status);
        }
        const StartFiles start = startFiles(count, words.data());
        return start.error.isEmpty() ? start.files.join(u' ') : start.error;
    };
    const QString here = QDir::currentPath() + u'/';
    EXPECT_EQ(of({}), QString());
    EXPECT_EQ(of({"a.jpg", "--version"}), u"status 0");
    EXPECT_EQ(of({"/photos/a.jpg", "b.jpg"}), u"/photos/a.jpg "_s + here + u"b.jpg"_s);
    EXPECT_EQ(of({"--", "--help"}), here + u"--help"_s);
    EXPECT_EQ(of({"--nonsense"}), u"There is no option --nonsense.");
    EXPECT_TRUE(of({"\xFF.jpg"}).contains(u"is not UTF-8"));
}

TEST(SingleInstance, AStartWaitsForAnEarlierOneThatIsAboutToEndButNotForEver) {
    for (const bool endsInTime : {true, false}) {
        const QTemporaryDir folder;
        VirtualClock clock;
        auto first = std::make_unique<SingleInstance>(folder.path());
        ASSERT_EQ(first->claim(), Standing::first);
        first->close();
        SingleInstance second(folder.path());
        QTimer whenTold;
        QObject::connect(&whenTold, &QTimer::timeout, &whenTold, [&] {
            auto* news = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (news == nullptr) {
                return;
            }
            if (endsInTime) {
                first.reset();
                clock.advance(std::chrono::seconds(1));
            } else {
                clock.advance(EndingInstance::patience);
                EXPECT_EQ(news->text(), u"Ostrelle Captions has not ended yet");
                news->reject();
            }
        });
        whenTold.start(std::chrono::milliseconds(1));
        EXPECT_EQ(EndingInstance(second, clock).wait(), endsInTime ? Standing::first : Standing::early);
    }
}

TEST(SingleInstance, WhatAKilledProgramLeftIsNoInstance) {
    const QTemporaryDir folder;
    writeFile(folder.filePath(u"ostrelle-captions.lock"_s), "4194305\nostrelle-captions\nanother-host\n");
    SingleInstance instance(folder.path());
    EXPECT_EQ(instance.claim(), Standing::first);
}

TEST(SingleInstance, WhereNoLockCanBeMadeTheProgramStartsAllTheSame) {
    SingleInstance instance(u"/proc/none"_s);
    EXPECT_EQ(instance.claim(), Standing::first);
}

} // namespace ostrelle
