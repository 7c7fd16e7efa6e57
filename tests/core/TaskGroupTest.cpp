// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/TaskGroup.h"

#include "core/Error.h"
#include "support/Await.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

#include <QStringList>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

class TaskGroupTest : public testing::Test {
protected:
    static QCoro::Task<> work(VirtualClock* clock, std::chrono::seconds duration, QStringList* ended) {
        co_await clock->sleep(duration);
        ended->append(QString::number(duration.count()));
    }
    static QCoro::Task<> fail(VirtualClock* clock) {
        co_await clock->sleep(std::chrono::seconds(1));
        throw Error(u"The disk is full."_s);
    }
    /// A task that starts another one in the group when it ends.
    static QCoro::Task<> chain(VirtualClock* clock, TaskGroup* tasks, QStringList* ended) {
        co_await clock->sleep(std::chrono::seconds(1));
        tasks->spawn(work(clock, std::chrono::seconds(2), ended));
    }

    VirtualClock clock;
    QStringList reports;
    QStringList ended;
    std::unique_ptr<TaskGroup> tasks =
        std::make_unique<TaskGroup>([this](const QString& words) { reports.append(words); });
};

TEST_F(TaskGroupTest, AGroupWithoutTasksIsFinished) {
    await(tasks->finished());
}

TEST_F(TaskGroupTest, FinishesWithItsLastTaskThoseIncludedThatBeginMeanwhile) {
    tasks->spawn(chain(&clock, tasks.get(), &ended));
    const QCoro::Task<> first = tasks->finished();
    const QCoro::Task<> second = tasks->finished();
    clock.advance(std::chrono::seconds(1));
    waitUntil([this] { return clock.waiting() == 1 && tasks->running() == 1; });
    EXPECT_FALSE(first.isReady());

    clock.advance(std::chrono::seconds(2));
    waitUntil([&] { return first.isReady() && second.isReady(); });
    EXPECT_EQ(ended, QStringList(u"2"_s));
    EXPECT_EQ(tasks->running(), 0);
}

TEST_F(TaskGroupTest, TellsWhatEscapesAndGoesOn) {
    tasks->spawn(fail(&clock));
    tasks->spawn(work(&clock, std::chrono::seconds(2), &ended));
    clock.advance(std::chrono::seconds(2));
    await(tasks->finished());
    EXPECT_EQ(reports, QStringList(u"The disk is full."_s));
    EXPECT_EQ(ended, QStringList(u"2"_s));
}

TEST_F(TaskGroupTest, ATaskMayOutliveItsGroup) {
    tasks->spawn(fail(&clock));
    const QCoro::Task<> finished = tasks->finished();
    tasks.reset();
    clock.advance(std::chrono::seconds(1));
    waitUntil([&] { return finished.isReady(); });
    EXPECT_EQ(reports.size(), 1);
}

} // namespace

} // namespace ostrelle
