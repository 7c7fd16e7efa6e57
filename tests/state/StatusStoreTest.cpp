// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/StatusStore.h"

#include "standins/MemoryDefaults.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <limits>
#include <memory>

namespace ostrelle {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

class StatusStoreTest : public testing::Test {
protected:
    StatusStoreTest() { restart(); }

    void restart() {
        status = std::make_unique<StatusStore>(defaults, clock);
        QObject::connect(status.get(), &StatusStore::batchFinished, status.get(),
                         [this](const BatchTiming& timing) { timings.append(timing); });
    }
    void finishRun(qint64 images, std::chrono::milliseconds length) {
        status->beginTimedRun(images);
        clock.advance(length);
        status->recordBatchFinished();
    }
    QVariantList storedTimes() const { return defaults.values.value(u"stats_processingTimes"_s).toList(); }

    MemoryDefaults defaults;
    VirtualClock clock;
    std::unique_ptr<StatusStore> status;
    QList<BatchTiming> timings;
};

TEST_F(StatusStoreTest, CountersOfAllTimeSurviveARestart) {
    const QSignalSpy captioned(status.get(), &StatusStore::imageProcessed);
    status->recordImageProcessed();
    status->recordImageProcessed();
    status->recordImageFailed();
    status->setProcessed(2);
    EXPECT_EQ(captioned.size(), 2);
    EXPECT_EQ(defaults.values, (QMap<QString, QVariant>{{u"stats_totalProcessed"_s, qint64(2)},
                                                        {u"lifetime_imagesProcessed"_s, qint64(2)},
                                                        {u"stats_totalFailed"_s, qint64(1)}}));
    restart();
    EXPECT_EQ(status->lifetimeImagesProcessed(), 2);
    EXPECT_EQ(status->processed(), 0); // counts this run only
    EXPECT_DOUBLE_EQ(status->successRate(), 200.0 / 3);
}

TEST_F(StatusStoreTest, AFinishedRunTellsAndRemembersItsTime) {
    finishRun(4, 10s);
    finishRun(0, 10s); // a run without images does not count
    finishRun(2, 1500ms);
    status->recordBatchFinished(); // no run has begun
    ASSERT_EQ(timings.size(), 2);
    EXPECT_EQ(timings[1].imageCount, 2);
    EXPECT_DOUBLE_EQ(timings[1].totalSeconds, 1.5);
    EXPECT_DOUBLE_EQ(timings[1].secondsPerImage, 0.75);
    EXPECT_DOUBLE_EQ(timings[1].averageSeconds, (2.5 + 0.75) / 2);
    EXPECT_EQ(storedTimes(), QVariantList({2.5, 0.75}));
}

TEST_F(StatusStoreTest, OnlyAHundredRunsAreRemembered) {
    for (int seconds = 1; seconds <= 101; ++seconds) {
        finishRun(1, std::chrono::seconds(seconds));
    }
    EXPECT_EQ(storedTimes().size(), 100);
    EXPECT_EQ(storedTimes().first(), 2.0);
    EXPECT_DOUBLE_EQ(timings.last().averageSeconds, (2 + 101) / 2.0);

    defaults.values.insert(u"stats_processingTimes"_s, QVariantList(500, 1.0)); // written by another program
    restart();
    finishRun(1, 1s);
    EXPECT_EQ(storedTimes().size(), 100);
}

TEST_F(StatusStoreTest, StoredTimesAreTakenWhenAllAreNumbers) {
    const std::pair<QVariant, double> rows[] = {
        {QVariantList{1.0, qint64(2)}, 1.5}, {QVariantList{1.0, u"2"_s}, 0}, {QVariantList(), 0}, {3.0, 0}};
    for (const auto& [stored, average] : rows) {
        defaults.values = {{u"stats_processingTimes"_s, stored}};
        restart();
        EXPECT_EQ(status->averageProcessingTime(), average);
    }
}

TEST_F(StatusStoreTest, ClearingLeavesTheLifetimeCount) {
    status->recordImageProcessed();
    status->setTotalFailedAllTime(1);
    finishRun(1, 1s);
    status->clearStatistics();
    EXPECT_EQ(status->successRate(), 0);
    EXPECT_EQ(status->averageProcessingTime(), 0);
    EXPECT_EQ(defaults.values, (QMap<QString, QVariant>{{u"stats_totalProcessed"_s, qint64(0)},
                                                        {u"lifetime_imagesProcessed"_s, qint64(1)},
                                                        {u"stats_totalFailed"_s, qint64(0)}}));
}

TEST_F(StatusStoreTest, ACountThatDoesNotFitEndsTheProgram) {
    status->setLifetimeImagesProcessed(std::numeric_limits<qint64>::max());
    EXPECT_DEATH(status->recordImageProcessed(), "too large");
}

} // namespace

} // namespace ostrelle
