// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/CaptionTurns.h"

#include "support/Await.h"

#include <gtest/gtest.h>

#include <QStringList>
#include <map>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

using Turn = std::unique_ptr<CaptionTurns::Turn>;

/// Two images at once, or one run. Each has a name.
class CaptionTurnsTest : public testing::Test {
protected:
    void image(const QString& name) { m_tasks.push_back(hold(turns->imageTurn(), name)); }
    void run(const QString& name) { m_tasks.push_back(hold(turns->runTurn(), name)); }
    void leave(const QString& name) { m_held.erase(name); }

    /// The names whose turn has begun, in order, once there are `count`.
    QStringList begunOnce(qsizetype count) {
        waitUntil([&] { return begun.size() >= count; });
        return begun;
    }

    std::unique_ptr<CaptionTurns> turns = std::make_unique<CaptionTurns>(2);
    QStringList begun;
    QStringList sentAway;

private:
    QCoro::Task<> hold(QCoro::Task<Turn> coming, QString name) {
        Turn turn = co_await std::move(coming);
        (turn ? begun : sentAway).append(name);
        if (turn) {
            m_held.insert_or_assign(name, std::move(turn));
        }
    }

    std::map<QString, Turn> m_held;
    std::vector<QCoro::Task<>> m_tasks;
};

TEST_F(CaptionTurnsTest, ImagesTakeTheirPlacesInTheOrderInWhichTheyCame) {
    for (const char16_t* name : {u"a", u"b", u"c", u"d"}) {
        image(QString::fromUtf16(name));
    }
    EXPECT_EQ(begunOnce(2), QStringList({u"a"_s, u"b"_s}));
    leave(u"b"_s);
    EXPECT_EQ(begunOnce(3).last(), u"c"_s);
    leave(u"a"_s);
    EXPECT_EQ(begunOnce(4).last(), u"d"_s);
}

TEST_F(CaptionTurnsTest, AStopEndsTheRunUnderWayAndDismissesWhatWaits) {
    const Overtaking::Mark mark = turns->stopMark();
    run(u"run"_s);
    image(u"a"_s);
    run(u"another"_s);
    EXPECT_EQ(begunOnce(1), QStringList{u"run"_s});
    turns->stop();
    EXPECT_TRUE(turns->isRunEnding() && mark.isOvertaken());
    leave(u"run"_s);
    EXPECT_FALSE(turns->isRunEnding());
    image(u"b"_s);
    EXPECT_EQ(begunOnce(2).last(), u"b"_s);
    waitUntil([this] { return sentAway.size() == 2; });
    turns->stop(); // an image is no run: it finishes
    EXPECT_FALSE(turns->isRunEnding());
}

TEST_F(CaptionTurnsTest, NothingBeginsDuringAPauseUntilItEndsOrAllIsStopped) {
    run(u"run"_s);
    turns->setPaused(true);
    image(u"a"_s);
    const QCoro::Task<bool> next = turns->mayGoOn();
    leave(u"run"_s);
    EXPECT_FALSE(next.isReady());
    EXPECT_EQ(begunOnce(1), QStringList{u"run"_s});
    turns->setPaused(false);
    EXPECT_EQ(begunOnce(2).last(), u"a"_s);
    waitUntil([&] { return next.isReady(); });

    leave(u"a"_s);
    turns->setPaused(true);
    image(u"b"_s);
    turns->stop();
    EXPECT_FALSE(turns->isPaused());
    waitUntil([this] { return sentAway == QStringList{u"b"_s}; });
    turns->setPaused(true);
    turns->close();
    EXPECT_FALSE(turns->isPaused());
}

TEST_F(CaptionTurnsTest, ARunGoesAheadOfWaitingImagesAndIsAlone) {
    image(u"a"_s);
    image(u"b"_s);
    image(u"c"_s);
    run(u"first run"_s);
    run(u"second run"_s);
    begunOnce(2);
    leave(u"a"_s);
    EXPECT_EQ(begun.size(), 2) << "an image is still being captioned";
    leave(u"b"_s);
    EXPECT_EQ(begunOnce(3).last(), u"first run"_s);
    leave(u"first run"_s);
    EXPECT_EQ(begunOnce(4).last(), u"second run"_s);
    leave(u"second run"_s);
    EXPECT_EQ(begunOnce(5).last(), u"c"_s);
}

TEST_F(CaptionTurnsTest, APlaceThatIsFreeIsKeptForTheRunThatWaits) {
    image(u"a"_s);
    begunOnce(1);
    run(u"run"_s);
    image(u"b"_s);
    leave(u"a"_s);
    EXPECT_EQ(begunOnce(2).last(), u"run"_s);
    leave(u"run"_s);
    EXPECT_EQ(begunOnce(3).last(), u"b"_s);
}

TEST_F(CaptionTurnsTest, ClosingSendsAwayWhoWaitsAndWhoComes) {
    image(u"a"_s);
    image(u"b"_s);
    image(u"c"_s);
    run(u"run"_s);
    begunOnce(2);
    turns->close();
    waitUntil([this] { return sentAway.size() == 2; });
    image(u"late"_s);
    waitUntil([this] { return sentAway.size() == 3; });
    leave(u"a"_s);
    leave(u"b"_s);
    EXPECT_EQ(begun.size(), 2);
}

TEST_F(CaptionTurnsTest, ATurnMayOutliveTheTurns) {
    image(u"a"_s);
    begunOnce(1);
    turns.reset();
    leave(u"a"_s);
}

} // namespace

} // namespace ostrelle
