// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ReadAhead.h"

#include "pipeline/PipelineFixture.h"
#include "support/HangingThreads.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QTimeZone utc = QTimeZone::utc();

class ReadAheadTest : public PipelineTest {
protected:
    QThreadPool* decoders() { return threads.renderersOf(folder.path()); }
    /// What is read ahead of one image.
    OpenedImage readAhead(const QString& image, bool skipsCaptioned = false) {
        ReadAhead ahead(threads, {image}, utc, skipsCaptioned);
        return *await(ahead.take(0));
    }
};

} // namespace

TEST_F(ReadAheadTest, ARunUsesThePictureThatWasMadeAheadAndNothingIsWrittenBefore) {
    const QString image = rawImage();
    ReadAhead ahead(threads, {image}, utc, false);
    decoders()->waitForDone();
    EXPECT_FALSE(QFile::exists(path(u"IMG_1.xmp"_s)));
    const HangingThreads hanging(decoders());
    BatchRun batch(program.analyzerParts(), {image}, {.begun = clock.now()}, &ahead, [](const auto&) {});
    EXPECT_EQ(drive(batch.execute()).first().kind, OutcomeKind::captioned);
    EXPECT_TRUE(caption());
}

TEST_F(ReadAheadTest, WhatHasChangedSinceIsReadAgain) {
    const QString image = rawImage();
    sidecar("Stub");
    OpenedImage ahead = readAhead(image);
    ASSERT_TRUE(ahead.metadata);
    EditableReading known = *ahead.metadata;
    known.reading.facts.caption = u"As it was read ahead"_s;
    ahead.metadata = Attempt<EditableReading>::success(known);
    const auto open = [&] { return openImage(image, utc, {}, &ahead); };
    EXPECT_EQ(open().metadata->reading.facts.caption, u"As it was read ahead"_s);
    EXPECT_EQ(open().picture->rendition.jpeg, ahead.picture->rendition.jpeg);
    ahead.metadata = Attempt<EditableReading>::failed(nullptr);
    EXPECT_TRUE(open().metadata) << "a failed read is tried again";

    sidecar("Typed meanwhile");
    EXPECT_EQ(open().metadata->reading.facts.caption, u"Typed meanwhile"_s);
    EXPECT_TRUE(open().picture) << "the picture file has not changed";
    write(u"IMG_1.DNG"_s, dngFile(SportsScene(300, 200, 9)));
    EXPECT_FALSE(open().picture);
}

TEST_F(ReadAheadTest, ASidecarThatCouldNotBeMadeIsNoSidecarWithoutFacts) {
    const QString image = rawImage();
    ASSERT_TRUE(QFile::link(path(u"nowhere"_s), path(u"IMG_1.xmp"_s)));
    const OpenedImage ahead = readAhead(image);
    EXPECT_FALSE(openImage(image, utc, {}, &ahead).metadata) << "nothing could be written into it";
}

TEST_F(ReadAheadTest, AnImageThatIsToBeLeftAloneGetsNoPicture) {
    const QString image = rawImage();
    sidecar(QByteArray(51, 'x'));
    EXPECT_TRUE(readAhead(image).picture);
    EXPECT_FALSE(readAhead(image, true).picture);
    sidecar("Stub");
    EXPECT_TRUE(readAhead(image, true).picture);
}

TEST_F(ReadAheadTest, ImagesBehindTheNextTwentyAreNotBegun) {
    QStringList files;
    for (qsizetype number = 0; number <= ReadAhead::depth; ++number) {
        files.append(path(u"IMG_%1.JPG"_s.arg(number)));
    }
    ReadAhead ahead(threads, files, utc, false);
    decoders()->waitForDone();
    jpegImage(u"IMG_19.JPG"_s);
    jpegImage(u"IMG_20.JPG"_s);
    EXPECT_FALSE(await(ahead.take(19))->picture) << "it was read before it existed";
    EXPECT_TRUE(await(ahead.take(20))->picture);
}

TEST_F(ReadAheadTest, ImagesThatARunPassesOverAreNotRead) {
    ReadAhead ahead(threads, QStringList(100, path(u"IMG_1.JPG"_s)), utc, false);
    EXPECT_TRUE(await(ahead.take(80)));
    EXPECT_FALSE(await(ahead.take(19)) || await(ahead.take(50)));
}

} // namespace ostrelle
