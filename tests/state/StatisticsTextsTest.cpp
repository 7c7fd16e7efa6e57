// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/StatisticsTexts.h"

#include "standins/MemoryDefaults.h"
#include "support/RecordingLog.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

#include <QLocale>

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(StatisticsTexts, LookTheSameInEveryLanguage) {
    MemoryDefaults defaults;
    VirtualClock clock;
    RecordingLog log;
    StatusStore status(defaults, clock);
    UsageTracker usage(defaults, clock, log);
    status.setLifetimeImagesProcessed(12345);
    status.setTotalProcessedAllTime(2);
    status.setTotalFailedAllTime(1);
    status.beginTimedRun(4);
    clock.advance(std::chrono::milliseconds(9200));
    status.recordBatchFinished();
    usage.recordUsage(1'000'000, 500'000);
    const QLocale before;
    for (const QLocale::Language language : {QLocale::English, QLocale::German}) {
        QLocale::setDefault(language);
        const StatisticsTexts texts = StatisticsTexts::of(status, usage);
        QLocale::setDefault(before);
        EXPECT_EQ(texts.lifetimeImages, u"12345");
        EXPECT_EQ(texts.successRate, u"66.7%");
        EXPECT_EQ(texts.successCounts, u"(2 processed, 1 failed)");
        EXPECT_EQ(texts.averageTime, u"2.3s");
        EXPECT_EQ(texts.todaysCost, u"$0.4500");
        EXPECT_EQ(texts.totalCost, u"$0.45");
    }
}

} // namespace ostrelle
