// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/ImageMetadata.h"

#include "core/Attempt.h"
#include "metadata/EditConditions.h"
#include "metadata/JpegMetadataBytes.h"
#include "metadata/SidecarBytes.h"
#include "metadata/facts/OvertakenError.h"
#include "metadata/facts/XMPError.h"
#include "metadata/sidecar/SidecarPath.h"
#include "platform/FileError.h"
#include "platform/Files.h"
#include "standins/DngBuilder.h"
#include "support/FileFacts.h"
#include "support/RecordingLog.h"
#include "support/Unprivileged.h"

#include <array>
#include <ctime>
#include <exception>
#include <functional>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QTimeZone zone = QTimeZone::utc();
const QString newCaption = u"Sam Abel scores."_s;

QByteArray sidecarWith(const QByteArray& caption, const QByteArray& city = "Ghent",
                       const QByteArray& others = {}) {
    return subject("<photoshop:City>" + city + "</photoshop:City>" + others +
                   described(item("x-default", caption)));
}

const QByteArray& rawPicture(std::size_t number) {
    static const std::array pictures = {dngFile(SportsScene(320, 200, 1)), dngFile(SportsScene(320, 200, 2))};
    return pictures.at(number - 1);
}

QByteArray withSegment(const QByteArray& jpeg, const QByteArray& segment) {
    return jpeg.first(2) + segment + jpeg.sliced(2);
}

QByteArray jpegImage(const QByteArray& caption, const QByteArray& city = "Ghent", std::size_t number = 1) {
    static const std::array pictures = {jpegFile(SportsScene(320, 200, 1).image()),
                                        jpegFile(SportsScene(320, 200, 2).image())};
    return withSegment(pictures.at(number - 1),
                       iptcSegment(utf8Declared + iptc(90, city) + iptc(120, caption)));
}

/// A folder with an image that another program changes while its caption is being made.
class ImageMetadataTest : public testing::Test {
protected:
    using Case = OvertakenError::Case;

    void write(const QString& name, const QByteArray& bytes) const {
        replaceFile(folder.filePath(name), bytes);
    }
    QByteArray read(const QString& name) const { return contentsOf(folder.filePath(name)); }
    /// Writes a caption that was made before `meanwhile`. An overtaken write must leave the file alone.
    void expectAfter(const std::function<void()>& meanwhile, const QString& image, const QString& file,
                     std::optional<Case> expected) {
        CaptionSource source{.facts = ImageMetadata(image).read(zone).facts, .zone = zone, .picture = {}};
        ImageFile seen(image);
        source.picture = seePicture(seen);
        meanwhile();
        const QByteArray left = read(file);
        std::optional<Case> overtaken;
        try {
            ImageMetadata(image).writeCaption(newCaption, source, log);
            EXPECT_EQ(captionOf(image), newCaption);
        } catch (const OvertakenError& error) {
            overtaken = error.kind();
            EXPECT_EQ(read(file), left);
        }
        EXPECT_EQ(overtaken, expected);
    }
    QString captionOf(const QString& image) const {
        return ImageMetadata(image).read(zone).facts.caption.value_or(QString());
    }

    UnprivilegedFolder folder;
    RecordingLog log;
    const QString raw = folder.filePath(u"IMG_1.DNG"_s);
    const QString jpeg = folder.filePath(u"IMG_2.JPG"_s);
};

} // namespace

TEST_F(ImageMetadataTest, WritesOnlyIntoWhatItIsStillAbout) {
    const auto put = [this](const QString& name, const QByteArray& bytes) {
        return std::function<void()>([this, name, bytes] { write(name, bytes); });
    };
    const auto sidecar = [&put](const QByteArray& bytes) { return put(u"IMG_1.xmp"_s, bytes); };
    const auto picture = [&put](std::size_t number) { return put(u"IMG_1.DNG"_s, rawPicture(number)); };
    const auto image = [&put](const QByteArray& bytes) { return put(u"IMG_2.JPG"_s, bytes); };
    const QByteArray typed = described(item("x-default", "typed by hand"));
    const struct {
        const QString& image;
        std::function<void()> meanwhile;
        std::optional<Case> expected;
    } rows[] = {
        {raw, sidecar(sidecarWith("stub", "Ghent", "<xmp:Rating>5</xmp:Rating>")), std::nullopt},
        {raw, sidecar(sidecarWith(" stub\n")), std::nullopt},
        {raw, picture(1), std::nullopt}, // copied again
        {raw, sidecar(sidecarWith("typed by hand")), Case::captionEdited},
        {raw, sidecar(sidecarWith("stub", "Bruges")), Case::factsChanged},
        {raw, sidecar(sidecarWith("typed by hand", "Bruges")), Case::captionAndFactsEdited},
        {raw,
         sidecar(sidecarWith("stub").replace("</rdf:Alt>", item("en-US", "typed by hand") + "</rdf:Alt>")),
         Case::captionEdited},
        {raw, picture(2), Case::pictureReplaced},
        {raw, [this] { QFile::remove(raw); }, Case::pictureReplaced},
        {jpeg, image(jpegImage("stub")), std::nullopt}, // copied again
        {jpeg, image(withSegment(jpegImage("stub"), segment(0xFE, "rated"))), std::nullopt},
        {jpeg, image(jpegImage("typed by hand")), Case::captionEdited},
        {jpeg, image(withSegment(jpegImage("stub"), packetSegment(subject(typed)))), Case::captionEdited},
        {jpeg, image(jpegImage("stub", "Bruges")), Case::factsChanged},
        {jpeg, image(jpegImage("stub", "Ghent", 2)), Case::pictureReplaced},
    };
    for (std::size_t row = 0; row < std::size(rows); ++row) {
        SCOPED_TRACE(row);
        picture(1)();
        sidecar(sidecarWith("stub"))();
        image(jpegImage("stub"))();
        expectAfter(rows[row].meanwhile, rows[row].image,
                    rows[row].image == raw ? u"IMG_1.xmp"_s : u"IMG_2.JPG"_s, rows[row].expected);
    }
}

TEST_F(ImageMetadataTest, FindsASidecarWhateverTheCaseOfItsExtension) {
    write(u"IMG_1.DNG"_s, rawPicture(1));
    write(u"IMG_1.Xmp"_s, sidecarWith("mixed"));
    EXPECT_EQ(captionOf(raw), u"mixed"_s);
    write(u"IMG_1.XMP"_s, sidecarWith("capitals"));
    EXPECT_EQ(captionOf(raw), u"capitals"_s);
    EXPECT_FALSE(ImageMetadata(raw).provideSidecar());
    expectAfter([] {}, raw, u"IMG_1.XMP"_s, std::nullopt);
    EXPECT_TRUE(read(u"IMG_1.XMP"_s).contains("Sam Abel"));
    EXPECT_FALSE(QFile::exists(sidecarPath(raw)));
    write(u"IMG_1.xmp"_s, sidecarWith("usual"));
    EXPECT_EQ(captionOf(raw), u"usual"_s);
    for (const QString& extension : {u"xmp"_s, u"XMP"_s, u"Xmp"_s}) {
        QFile::remove(folder.filePath(u"IMG_1."_s + extension));
    }
    EXPECT_TRUE(ImageMetadata(raw).provideSidecar());
    EXPECT_TRUE(QFile::exists(sidecarPath(raw)));
}

TEST_F(ImageMetadataTest, FillsASidecarThatAKilledProgramLeftEmpty) {
    write(u"IMG_1.DNG"_s, rawPicture(1));
    write(u"IMG_1.xmp"_s, {});
    EXPECT_FALSE(ImageMetadata(raw).provideSidecar()) << "another program may be about to write it";
    setDate(sidecarPath(raw), {.tv_sec = ::time(nullptr) - 60, .tv_nsec = 0});
    EXPECT_TRUE(ImageMetadata(raw).provideSidecar());
    EXPECT_EQ(captionOf(raw), QString());
}

TEST_F(ImageMetadataTest, FindsOutBeforehandWhatCannotBeWritten) {
    write(u"IMG_1.DNG"_s, rawPicture(1));
    write(u"IMG_1.xmp"_s, sidecarWith("stub"));
    write(u"IMG_2.JPG"_s, jpegImage("stub"));
    const auto refusal = [this](const QString& image) -> std::exception_ptr {
        ImageFile file(image);
        const EditableReading reading = ImageMetadata(image).readEditable(file, zone);
        log.lines = reading.refusalLines;
        return reading.refusal;
    };
    EXPECT_FALSE(refusal(raw) || refusal(jpeg));
    const EditConditions before = EditConditions::of(raw);
    EXPECT_EQ(EditConditions::of(raw), before);

    setMode(folder.path(), 0555);
    EXPECT_TRUE(failureAs<FileError>(refusal(raw)));
    EXPECT_TRUE(failureAs<XMPError>(refusal(jpeg)));
    EXPECT_NE(EditConditions::of(raw), before);
    setMode(folder.path(), 0700);
    EXPECT_EQ(EditConditions::of(raw), before);

    write(u"IMG_2.JPG"_s, withSegment(jpegImage("stub"), packetSegment("<x:xmpmeta><dc:description>")));
    EXPECT_TRUE(failureAs<XMPError>(refusal(jpeg)));
    EXPECT_EQ(log.lines.last(),
              u"[XMPWriter] Nothing was written into IMG_2.JPG, because its XMP packet is damaged."_s);
    write(u"IMG_1.xmp"_s, "<x:xmpmeta");
    EXPECT_THROW(refusal(raw), Error);
}

TEST_F(ImageMetadataTest, KeepsEachSidecarThatNobodyMayRead) {
    write(u"IMG_1.DNG"_s, rawPicture(1));
    for (const QByteArray& text : {"first", "second", "third"}) {
        write(u"IMG_1.xmp"_s, text);
        ImageMetadata(raw).replaceUnreadableSidecar();
        EXPECT_EQ(captionOf(raw), QString());
    }
    EXPECT_EQ(read(u"IMG_1.xmp.unreadable"_s), "first");
    EXPECT_EQ(read(u"IMG_1.xmp.unreadable.2"_s), "second");
    EXPECT_EQ(read(u"IMG_1.xmp.unreadable.3"_s), "third");
}

} // namespace ostrelle
