// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/ImageMetadata.h"
#include "metadata/XMPWriter.h"
#include "pipeline/PipelineFixture.h"
#include "pipeline/PromptComposition.h"

namespace ostrelle {

using namespace Qt::StringLiterals;
using Outcome = OutcomeKind;

namespace {

const QString typed = u"Typed by the photographer."_s;

/// Images that others change while the model works.
class OvertakenImageTest : public PipelineTest {
protected:
    /// The image as a scan sees it.
    ImageRequest seen(const QString& file) const {
        return {
            .file = file, .seenAt = clock.now(), .facts = ImageMetadata(file).read(clock.timeZone()).facts};
    }
    void replace(const QString& image, const QByteArray& bytes) const {
        QFile::remove(image);
        write(QFileInfo(image).fileName(), bytes);
    }
    /// Runs the task, and `meanwhile` while the model holds its answer.
    template <typename T>
    T after(QCoro::Task<T> task, const std::function<void()>& meanwhile) {
        waitUntil([this] { return model.isHolding(); });
        meanwhile();
        model.releaseHeld();
        return drive(std::move(task));
    }
    static QByteArray otherRaw() { return dngFile(SportsScene(320, 200, 9)); }
    static QByteArray otherJpeg() { return jpegFile(SportsScene(320, 200, 9).image()); }
};

} // namespace

TEST_F(OvertakenImageTest, ACaptionThatIsTypedMeanwhileStays) {
    const QString image = rawImage();
    sidecar("Stub");
    model.enqueue(held(u"By the model."_s));
    EXPECT_TRUE(after(analyzer.analyzeSingle(image), [this] { sidecar(typed.toUtf8()); }));
    EXPECT_EQ(caption(), typed);
    EXPECT_EQ(reports.last().kind, Outcome::edited);
    EXPECT_EQ(reports.last().reason, u"Its caption was edited meanwhile and stays as it is."_s);
    EXPECT_TRUE(hasLogged(u"[Analyzer] Nothing was written into IMG_1.DNG: Its caption was edited"_s));
    EXPECT_EQ(status.failed(), 0);
}

TEST_F(OvertakenImageTest, InABatchToo) {
    const QStringList images{rawImage(), jpegImage(u"IMG_2.JPG"_s), rawImage(u"IMG_3.DNG"_s)};
    sidecar("Stub");
    sidecar("Stub", u"IMG_3.xmp"_s);
    model.enqueue(held(uR"([{"image":1,"caption":"one"},{"image":2,"caption":"two"},
                            {"image":3,"caption":"three"}])"_s));
    model.enqueue(reply(u"Of the second picture."_s));
    const QList<ImageOutcome> outcome = after(captionBatch(images), [&] {
        sidecar(typed.toUtf8());
        replace(images[1], otherJpeg());
    });
    EXPECT_EQ(captionOf(images[0]), typed);
    EXPECT_TRUE(captionOf(images[1]).value_or(QString()).startsWith(u"Of the second picture."_s));
    EXPECT_EQ(captionOf(images[2]), u"three"_s);
    EXPECT_EQ(outcome[0].kind, Outcome::edited);
    EXPECT_EQ(outcome[1].kind, Outcome::captioned);
    EXPECT_EQ(outcome[2].kind, Outcome::captioned);
    EXPECT_EQ(model.requests().size(), 2) << "the model is asked again about the replaced picture";
}

TEST_F(OvertakenImageTest, AReplacedPictureIsCaptionedAnew) {
    const QString image = rawImage();
    model.enqueue(held(u"Of the first picture."_s));
    model.enqueue(reply(u"Of the second picture."_s));
    EXPECT_TRUE(after(analyzer.analyzeSingle(image), [&] { replace(image, otherRaw()); }));
    EXPECT_EQ(caption(), u"Of the second picture."_s);
    EXPECT_EQ(model.requests().size(), 2);
}

TEST_F(OvertakenImageTest, AutoModeCaptionsOnlyWhatItsScanSaw) {
    const QString image = rawImage();
    sidecar("Stub");
    const ImageRequest request = seen(image);
    sidecar(typed.toUtf8()); // while the image rests or waits for its turn
    EXPECT_EQ(drive(analyzer.captionWatched(request)).kind, Outcome::edited);
    EXPECT_EQ(caption(), typed);

    sidecar("Stub");
    const ImageRequest again = seen(image);
    write(u"IMG_1.xmp"_s, read(u"IMG_1.xmp"_s).replace("Herons", "Swans"));
    EXPECT_EQ(drive(analyzer.captionWatched(again)).kind, Outcome::changed) << "to be scanned again";
    EXPECT_TRUE(model.requests().isEmpty());

    model.enqueue(held(u"Of the first picture."_s));
    const auto replaced = after(analyzer.captionWatched(seen(image)), [&] { replace(image, otherRaw()); });
    EXPECT_EQ(replaced.kind, Outcome::changed);
    EXPECT_EQ(caption(), u"Stub"_s);
}

TEST_F(OvertakenImageTest, AutoModeTellsAnEditFromAPresetThatIsStampedOn) {
    const QString image = rawImage();
    ImageMetadata(image).provideSidecar(); // as the scan does
    const ImageRequest request = seen(image);
    sidecar("A preset's stub");
    EXPECT_EQ(drive(analyzer.captionWatched(request)).kind, Outcome::changed);
    QFile::remove(path(u"IMG_1.xmp"_s));
    ImageMetadata(image).provideSidecar();
    XMPWriter().writeDefaultCaption(typed, path(u"IMG_1.xmp"_s));
    EXPECT_EQ(drive(analyzer.captionWatched(request)).kind, Outcome::edited);
    EXPECT_EQ(caption(), typed);
    EXPECT_TRUE(model.requests().isEmpty());

    sidecar("Stub");
    model.enqueue(held(u"By the model."_s));
    const auto edited = after(analyzer.captionWatched(seen(image)), [&] {
        sidecar(typed.toUtf8());
        write(u"IMG_1.xmp"_s, read(u"IMG_1.xmp"_s).replace("Herons", "Swans"));
    });
    EXPECT_EQ(edited.kind, Outcome::edited) << "the edit stays once the model has been asked";
    EXPECT_EQ(caption(), typed);
}

TEST_F(OvertakenImageTest, AutoModeNeedsNoRosterThatIsSet) {
    settings.setCodeReplacementsFile(std::nullopt);
    const ImageRequest request{.file = rawImage(), .seenAt = clock.now()};
    EXPECT_EQ(drive(analyzer.captionWatched(request)).kind, Outcome::captioned);
}

TEST_F(OvertakenImageTest, TwoProgramsPayForAnImageOnce) {
    CaptionProgram other(surroundings());
    const QDateTime begun = clock.now();
    const QStringList images{rawImage(), jpegImage(u"IMG_2.JPG"_s)};
    model.enqueue(held(uR"([{"image":1,"caption":"one"},{"image":2,"caption":"two"}])"_s));
    auto batch = captionBatch(images);
    waitUntil([this] { return model.isHolding(); });
    auto otherBatch = captionBatchOf(other, {images[1], images[0]});
    auto single = other.analyzer.analyzeSingle(images[0]);
    waitUntil([this] { return clock.waiting() >= 2; }); // both wait for the images
    clock.advance(std::chrono::seconds(5));
    model.releaseHeld();
    driveUntil([&] { return batch.isReady() && otherBatch.isReady() && single.isReady(); });
    EXPECT_TRUE(await(std::move(single)));
    EXPECT_EQ(await(std::move(batch))[0].kind, Outcome::captioned);
    EXPECT_EQ(await(std::move(otherBatch))[0].kind, Outcome::skipped);
    EXPECT_TRUE(drive(other.analyzer.analyzeSingle(images[1], begun))) << "from a list that began earlier";
    EXPECT_EQ(model.requests().size(), 1);
    EXPECT_EQ(captionOf(images[1]), u"two"_s);
}

TEST_F(OvertakenImageTest, ARequestHasTheSettingsOfOneMoment) {
    const PreparedImage image{
        .file = rawImage(), .source = {}, .defaultCaption = u"Stub"_s, .audioTranscription = {}};
    auto composed = composeImagePrompt(settings, program.prompts, log, clock.timeZone(), image,
                                       {}); // which now waits for the rules
    settings.setSport(Sport::soccer);
    EXPECT_TRUE(drive(std::move(composed)).contains(u"- Sport: Football\n"_s)) << "like the rules";
}

TEST_F(OvertakenImageTest, AServiceThatRefusesOneImageAfterTheOtherIsNotifiedOfOnce) {
    const auto refuse = [this](int httpStatus, const QByteArray& body, int count) {
        for (int index = 0; index < count; ++index) {
            model.enqueue({.status = httpStatus, .body = body});
            EXPECT_FALSE(run(jpegImage(u"IMG_%1.JPG"_s.arg(index))));
        }
    };
    refuse(401, "{}", 2);
    EXPECT_TRUE(notificationCenter.posted.isEmpty());
    refuse(401, "{}", 3);
    ASSERT_EQ(notificationCenter.posted.size(), 1);
    EXPECT_EQ(notificationCenter.posted[0].title, u"Ostrelle Captioning Failed"_s);
    EXPECT_EQ(status.lastMessage(), u"OpenAI refused the API key (HTTP 401). Enter a valid one."_s);
    EXPECT_TRUE(notificationCenter.posted[0].body.endsWith(*status.lastMessage()));
    EXPECT_TRUE(run(jpegImage(u"GOOD.JPG"_s)));
    refuse(429, R"({"error":{"code":"insufficient_quota"}})", 4);
    ASSERT_EQ(notificationCenter.posted.size(), 2);
    EXPECT_EQ(notificationCenter.posted[1].title, u"Rate Limit Exceeded"_s);
    defaults.set(apiKeyName, u"another"_s);
    refuse(401, "{}", 2);
    EXPECT_EQ(notificationCenter.posted.size(), 2) << "a new key starts a new count";
    refuse(401, "{}", 1);
    EXPECT_EQ(notificationCenter.posted.size(), 3);
}

} // namespace ostrelle
