// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ProcessingTracker.h"

#include "support/VirtualClock.h"

#include <gtest/gtest.h>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

class ProcessingTrackerTest : public testing::Test {
protected:
    const QString image = u"IMG_1.CR2"_s;
    VirtualClock clock;
    ProcessingTracker tracker{clock};
};

TEST_F(ProcessingTrackerTest, AFailureCountsForAMinute) {
    tracker.finish(image, false);
    struct Case {
        std::chrono::milliseconds later;
        bool isRecent;
    };
    const QDateTime failure = clock.now();
    for (const Case& test : {Case{std::chrono::seconds(0), true}, Case{std::chrono::seconds(59), true},
                             Case{std::chrono::milliseconds(59'999), true},
                             Case{std::chrono::seconds(60), false}, Case{std::chrono::hours(-1), false}}) {
        clock.setNow(failure.addMSecs(test.later.count()));
        EXPECT_EQ(tracker.hasRecentlyFailed(image), test.isRecent) << test.later.count();
        EXPECT_EQ(tracker.timeSinceFailure(image), test.later);
    }
}

TEST_F(ProcessingTrackerTest, AFailureIsForgottenByANewBeginningOrASuccess) {
    tracker.finish(image, false);
    tracker.begin(image);
    EXPECT_EQ(tracker.timeSinceFailure(image), std::nullopt);
    tracker.finish(image, false);
    tracker.finish(image, true);
    EXPECT_EQ(tracker.timeSinceFailure(image), std::nullopt);
}

TEST_F(ProcessingTrackerTest, AReleaseIsNoFailure) {
    tracker.begin(image);
    EXPECT_TRUE(tracker.isProcessing(image));
    tracker.release(image);
    EXPECT_FALSE(tracker.isProcessing(image));
    EXPECT_EQ(tracker.timeSinceFailure(image), std::nullopt);
}

TEST_F(ProcessingTrackerTest, TellsWhoLeftSince) {
    tracker.begin(image);
    const quint64 whileInTheWorks = tracker.departures();
    tracker.finish(u"other.CR2"_s, true);
    EXPECT_FALSE(tracker.hasLeftSince(image, whileInTheWorks));
    tracker.release(image);
    EXPECT_TRUE(tracker.hasLeftSince(image, whileInTheWorks));
    EXPECT_FALSE(tracker.hasLeftSince(image, tracker.departures()));
}

TEST_F(ProcessingTrackerTest, ImagesOfOneStemAreTwo) {
    tracker.begin(u"IMG_1.JPG"_s);
    EXPECT_FALSE(tracker.isProcessing(image));
}

} // namespace

} // namespace ostrelle
