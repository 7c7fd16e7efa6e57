// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/PipelineFixture.h"

#include <QSet>
#include <algorithm>
#include <vector>

namespace ostrelle {

using namespace Qt::StringLiterals;
using Outcome = OutcomeKind;

namespace {

class OverlappingImagesTest : public PipelineTest {
protected:
    /// A reply that the model keeps for a while.
    static StandInAnswer held(const QString& caption) {
        StandInAnswer answer = reply(caption);
        answer.delivery = StandInAnswer::Delivery::held;
        return answer;
    }
};

} // namespace

TEST_F(OverlappingImagesTest, ThreeHundredImagesAtOnceAreEachCaptionedOnce) {
    constexpr int count = 300;
    std::vector<QCoro::Task<bool>> tasks;
    qsizetype begun = 0;
    qsizetype mostAtOnce = 0;
    QObject::connect(&status, &StatusStore::currentFileNameChanged, &status,
                     [&] { mostAtOnce = std::max(mostAtOnce, ++begun - reports.size()); });
    for (int index = 0; index < count; ++index) {
        const QString name = u"IMG_%1"_s.arg(index);
        tasks.push_back(analyzer.analyzeSingle(index % 2 == 0 ? rawImage(name + u".DNG"_s)
                                                              : jpegImage(name + u".JPG"_s)));
    }
    waitUntil([this] { return reports.size() == count; });
    EXPECT_EQ(status.processed(), count);
    EXPECT_TRUE(status.isProcessing()) << "the last one's progress stays to be seen";
    clock.advance(std::chrono::seconds(2));
    QSet<QString> captioned;
    for (QCoro::Task<bool>& task : tasks) {
        EXPECT_TRUE(await(std::move(task)));
    }
    for (const ImageOutcome& report : std::as_const(reports)) {
        EXPECT_EQ(report.kind, Outcome::captioned) << report.reason.toStdString();
        captioned.insert(report.file);
    }
    EXPECT_EQ(captioned.size(), count);
    EXPECT_EQ(model.requests().size(), count);
    EXPECT_EQ(mostAtOnce, CaptionTurns::imagesAtOnce);
    EXPECT_FALSE(status.isProcessing());
    EXPECT_EQ(status.totalFiles(), 0);
}

TEST_F(OverlappingImagesTest, AnImageThatARunCaptionsWhileItWaitsIsLeftAlone) {
    const QString image = jpegImage(u"IMG_2.JPG"_s);
    const QString missed = rawImage(u"IMG_3.DNG"_s);
    model.enqueue(held(u"Sam Abel scores."_s));
    auto early = analyzer.analyzeSingle(rawImage());
    waitUntil([this] { return model.isHolding(); });
    auto coming = turns.runTurn();
    auto late = analyzer.analyzeSingle(image);
    auto later = analyzer.analyzeSingle(missed);
    model.releaseHeld();
    auto turn = await(std::move(coming));
    model.enqueue(reply(u"By the run."_s));
    EXPECT_EQ(drive(captionBatch({image})).first().kind, Outcome::captioned);
    turn.reset();
    EXPECT_TRUE(await(std::move(late)));
    EXPECT_EQ(captionOf(image), u"By the run."_s);
    EXPECT_TRUE(await(std::move(later)));
    EXPECT_TRUE(captionOf(missed)) << "the run did not take it";
    EXPECT_TRUE(await(std::move(early)));
    EXPECT_EQ(model.requests().size(), 3);
}

TEST_F(OverlappingImagesTest, ImagesThatMissTheKeyTogetherAskForItOnce) {
    defaults.remove(apiKeyName);
    std::vector<QCoro::Task<bool>> tasks;
    alerts.isOpen = true;
    for (int index = 0; index < 20; ++index) {
        tasks.push_back(analyzer.analyzeSingle(jpegImage(u"IMG_%1.JPG"_s.arg(index))));
    }
    waitUntil([this] { return reports.size() == 20; });
    alerts.close();
    for (QCoro::Task<bool>& task : tasks) {
        EXPECT_FALSE(await(std::move(task)));
    }
    EXPECT_EQ(alerts.shown.size(), 1);
    EXPECT_EQ(status.failed(), 0);
}

TEST_F(OverlappingImagesTest, AProgressThatIsAnotherImagesIsLeftToIt) {
    auto broken = analyzer.analyzeSingle(write(u"IMG_1.JPG"_s, "no picture"));
    EXPECT_FALSE(await(std::move(broken)));
    model.enqueue(held(u"Sam Abel scores."_s));
    auto good = analyzer.analyzeSingle(jpegImage(u"IMG_2.JPG"_s));
    waitUntil([this] { return model.isHolding(); });
    clock.advance(std::chrono::seconds(2));
    EXPECT_TRUE(status.isProcessing());
    EXPECT_EQ(status.currentFileName(), u"IMG_2.JPG"_s);
    model.releaseHeld();
    EXPECT_TRUE(await(std::move(good)));
    EXPECT_TRUE(status.isProcessing()) << "it stays to be seen";
    clock.advance(std::chrono::seconds(2));
    EXPECT_FALSE(status.isProcessing());
}

} // namespace ostrelle
