// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/UsageTracker.h"

#include "standins/MemoryDefaults.h"
#include "support/RecordingLog.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

#include <memory>

namespace ostrelle {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

class UsageTrackerTest : public testing::Test {
protected:
    // 23:30 of 25 October in New York, and already the 26th in UTC.
    VirtualClock clock{QDateTime(QDate(2024, 10, 26), QTime(3, 30), QTimeZone::utc()),
                       QTimeZone("America/New_York")};
    MemoryDefaults defaults;
    RecordingLog log;
    std::unique_ptr<UsageTracker> usage = std::make_unique<UsageTracker>(defaults, clock, log);
};

TEST_F(UsageTrackerTest, TheFirstStartWritesTheDayOfTheUser) {
    EXPECT_EQ(defaults.values, (QMap<QString, QVariant>{{u"UsageTracker_TodaysCost"_s, 0.0},
                                                        {u"UsageTracker_TodaysTokens"_s, qint64(0)},
                                                        {u"UsageTracker_LastDate"_s, u"2024-10-25"_s}}));
}

TEST_F(UsageTrackerTest, AnswersAddUpAndAreLogged) {
    usage->recordUsage(1'000'000, 1'000'000);
    usage->recordUsage(2000, 500);
    EXPECT_EQ(
        log.lines,
        QStringList(
            {u"[UsageTracker] Recorded: 1000000 in + 1000000 out = $0.7500. Today: $0.7500, All time: $0.7500"_s,
             u"[UsageTracker] Recorded: 2000 in + 500 out = $0.0006. Today: $0.7506, All time: $0.7506"_s}));
    usage = std::make_unique<UsageTracker>(defaults, clock, log); // a restart on the same day
    EXPECT_EQ(usage->todaysTokens(), 2'002'500);
    EXPECT_DOUBLE_EQ(usage->todaysCost(), 0.7506);
    EXPECT_DOUBLE_EQ(usage->totalCostAllTime(), 0.7506);
}

TEST_F(UsageTrackerTest, ANewDayBeginsWithTheNextAnswerOrStart) {
    clock.advance(29min);
    usage->recordUsage(1'000'000, 0);
    clock.advance(1min); // midnight in New York
    EXPECT_DOUBLE_EQ(usage->todaysCost(), 0.15);
    log.lines.clear();
    usage->recordUsage(0, 1'000'000);
    EXPECT_EQ(
        log.lines,
        QStringList(
            {u"[UsageTracker] New day detected, resetting counters"_s,
             u"[UsageTracker] Recorded: 0 in + 1000000 out = $0.6000. Today: $0.6000, All time: $0.7500"_s}));
    EXPECT_EQ(usage->todaysTokens(), 1'000'000);
    EXPECT_EQ(defaults.values.value(u"UsageTracker_LastDate"_s), u"2024-10-26"_s);

    clock.advance(24h);
    usage = std::make_unique<UsageTracker>(defaults, clock, log);
    EXPECT_EQ(usage->todaysTokens(), 0);
    EXPECT_DOUBLE_EQ(usage->totalCostAllTime(), 0.75);
    EXPECT_EQ(defaults.values.value(u"UsageTracker_TodaysCost"_s), 0.0);
}

} // namespace

} // namespace ostrelle
