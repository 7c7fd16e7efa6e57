// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/StatusStore.h"

#include "support/MemoryDefaults.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>

namespace ostrelle {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

class StatusStoreTest : public testing::Test {
protected:
    StatusStoreTest() { listen(); }

    void restart() {
        status = std::make_unique<StatusStore>(defaults, clock);
        listen();
    }
    void finishRun(qint64 images, std::chrono::milliseconds length) {
        status->beginTimedRun(images);
        clock.advance(length);
        status->recordBatchFinished();
    }
    QVariantList storedTimes() const { return defaults.values.value(u"stats_processingTimes"_s).toList(); }

    MemoryDefaults defaults;
    VirtualClock clock;
    std::unique_ptr<StatusStore> status = std::make_unique<StatusStore>(defaults, clock);
    QList<BatchTiming> timings;
    int captioned = 0;

private:
    void listen() {
        QObject::connect(status.get(), &StatusStore::batchFinished, status.get(),
                         [this](const BatchTiming& timing) { timings.append(timing); });
        QObject::connect(status.get(), &StatusStore::imageProcessed, status.get(), [this] { ++captioned; });
    }
};

TEST_F(StatusStoreTest, CountersOfAllTimeSurviveARestart) {
    status->recordImageProcessed();
    status->recordImageProcessed();
    status->setTotalFailedAllTime(status->totalFailedAllTime() + 1);
    status->setProcessed(2);
    EXPECT_EQ(captioned, 2);
    EXPECT_EQ(defaults.values, (QMap<QString, QVariant>{{u"stats_totalProcessed"_s, qint64(2)},
                                                        {u"lifetime_imagesProcessed"_s, qint64(2)},
                                                        {u"stats_totalFailed"_s, qint64(1)}}));
    restart();
    EXPECT_EQ(status->totalProcessedAllTime(), 2);
    EXPECT_EQ(status->totalFailedAllTime(), 1);
    EXPECT_EQ(status->lifetimeImagesProcessed(), 2);
    EXPECT_EQ(status->processed(), 0); // of the run only
    EXPECT_DOUBLE_EQ(status->successRate(), 200.0 / 3);
}

TEST_F(StatusStoreTest, ChangesAreAnnouncedOnce) {
    int changes = 0;
    QObject::connect(status.get(), &StatusStore::lastMessageChanged, status.get(), [&changes] { ++changes; });
    QObject::connect(status.get(), &StatusStore::currentBatchStartIndexChanged, status.get(),
                     [&changes] { ++changes; });
    status->setLastMessage(u"Ready"_s);
    status->setLastMessage(u"Ready"_s);
    status->setCurrentBatchStartIndex(-1);
    status->setCurrentBatchStartIndex(-1);
    EXPECT_EQ(changes, 2);
    EXPECT_EQ(status->lastMessage(), u"Ready"_s);
}

TEST_F(StatusStoreTest, AFinishedRunTellsAndRemembersItsTime) {
    finishRun(4, 10s);
    finishRun(2, 1500ms);
    ASSERT_EQ(timings.size(), 2);
    EXPECT_EQ(timings[1].imageCount, 2);
    EXPECT_DOUBLE_EQ(timings[1].totalSeconds, 1.5);
    EXPECT_DOUBLE_EQ(timings[1].secondsPerImage, 0.75);
    EXPECT_DOUBLE_EQ(timings[1].averageSeconds, (2.5 + 0.75) / 2);
    EXPECT_EQ(storedTimes(), QVariantList({2.5, 0.75}));
    restart();
    EXPECT_DOUBLE_EQ(status->averageProcessingTime(), (2.5 + 0.75) / 2);
    status->recordBatchFinished(); // no run has begun
    EXPECT_EQ(timings.size(), 2);
}

TEST_F(StatusStoreTest, ARunWithoutImagesIsNoRunYet) {
    status->beginTimedRun(0);
    clock.advance(10s);
    status->recordBatchFinished();
    EXPECT_TRUE(timings.isEmpty());
    EXPECT_FALSE(defaults.exists(u"stats_processingTimes"_s));
}

TEST_F(StatusStoreTest, OnlyAHundredRunsAreRemembered) {
    for (int seconds = 1; seconds <= 101; ++seconds) {
        finishRun(1, std::chrono::seconds(seconds));
    }
    EXPECT_EQ(storedTimes().size(), 100);
    EXPECT_EQ(storedTimes().first(), 2.0);
    EXPECT_DOUBLE_EQ(timings.last().averageSeconds, (2 + 101) / 2.0);

    defaults.values.insert(u"stats_processingTimes"_s, QVariantList(500, 1.0)); // of another hand
    restart();
    finishRun(1, 1s);
    EXPECT_EQ(storedTimes().size(), 100);
}

TEST_F(StatusStoreTest, StoredTimesAreTakenWhenAllAreNumbers) {
    const std::vector<std::pair<QVariant, double>> rows = {{QVariantList{1.0, qint64(2)}, 1.5},
                                                           {QVariantList{1.0, u"2"_s}, 0},
                                                           {QVariantList{1.0, QVariantList()}, 0},
                                                           {QVariantList(), 0},
                                                           {u"1.0"_s, 0},
                                                           {3.0, 0}};
    for (const auto& [stored, average] : rows) {
        defaults.values = {{u"stats_processingTimes"_s, stored}};
        restart();
        EXPECT_EQ(status->averageProcessingTime(), average);
        finishRun(1, 4s);
        EXPECT_EQ(storedTimes().last(), 4.0);
    }
}

TEST_F(StatusStoreTest, ClearingLeavesTheLifetimeCount) {
    EXPECT_EQ(status->successRate(), 0);
    EXPECT_EQ(status->averageProcessingTime(), 0);
    status->recordImageProcessed();
    finishRun(1, 1s);
    EXPECT_EQ(status->successRate(), 100);
    status->clearStatistics();
    EXPECT_EQ(status->successRate(), 0);
    EXPECT_EQ(status->averageProcessingTime(), 0);
    EXPECT_EQ(status->lifetimeImagesProcessed(), 1);
    EXPECT_FALSE(defaults.exists(u"stats_processingTimes"_s));
    restart();
    EXPECT_EQ(status->totalProcessedAllTime(), 0);
    EXPECT_EQ(status->lifetimeImagesProcessed(), 1);
}

TEST_F(StatusStoreTest, ACountThatDoesNotFitEndsTheProgram) {
    status->setLifetimeImagesProcessed(std::numeric_limits<qint64>::max());
    EXPECT_DEATH(status->recordImageProcessed(), "too large");
}

} // namespace

} // namespace ostrelle
