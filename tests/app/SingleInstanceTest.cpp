// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SingleInstance.h"

#include "support/Await.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <memory>

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(SingleInstance, ASecondStartBringsTheFirstToTheFrontAndEnds) {
    const QTemporaryDir folder;
    auto first = std::make_unique<SingleInstance>(folder.filePath(u"config"_s));
    ASSERT_TRUE(first->isFirst());
    int knocks = 0;
    QObject::connect(first.get(), &SingleInstance::startedAgain, first.get(), [&knocks] { ++knocks; });
    SingleInstance second(folder.filePath(u"config"_s));
    EXPECT_FALSE(second.isFirst());
    waitUntil([&knocks] { return knocks == 1; });

    SingleInstance elsewhere(folder.filePath(u"another home"_s));
    EXPECT_TRUE(elsewhere.isFirst());
    first.reset();
    EXPECT_TRUE(second.isFirst());
}

TEST(SingleInstance, WhatAKilledProgramLeftIsNoInstance) {
    const QTemporaryDir folder;
    QFile lock(folder.filePath(u"ostrelle-captions.lock"_s));
    ASSERT_TRUE(lock.open(QIODevice::WriteOnly));
    lock.write("4194305\nostrelle-captions\nanother-host\n");
    lock.close();
    SingleInstance instance(folder.path());
    EXPECT_TRUE(instance.isFirst());
}

TEST(SingleInstance, WhereNoLockCanBeMadeTheProgramStartsAllTheSame) {
    SingleInstance instance(u"/proc/none"_s);
    EXPECT_TRUE(instance.isFirst());
}

} // namespace ostrelle
