// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SingleInstance.h"

#include "app/EndingInstance.h"
#include "support/Await.h"
#include "support/FileFacts.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTimer>
#include <QtConcurrentRun>
#include <memory>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

using Standing = SingleInstance::Standing;

/// Claims on another thread: claim() blocks until the first instance answers from this event loop.
Standing claimElsewhere(const QString& folder) {
    QFuture<Standing> claim = QtConcurrent::run([folder] { return SingleInstance(folder).claim(); });
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
