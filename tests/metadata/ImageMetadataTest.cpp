// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/ImageMetadata.h"

#include "metadata/EditConditions.h"
#include "metadata/JpegMetadataBytes.h"
#include "metadata/SidecarBytes.h"
#include "metadata/facts/OvertakenError.h"
#include "metadata/facts/XMPError.h"
#include "metadata/sidecar/SidecarPath.h"
#include "platform/FileError.h"
#include "support/RecordingLog.h"
#include "support/Unprivileged.h"

#include <sys/stat.h>

#include <QDir>
#include <functional>

#include "standins/DngBuilder.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QTimeZone zone = QTimeZone::utc();
const QString newCaption = u"Sam Abel scores."_s;

QByteArray sidecarWith(const QByteArray& caption, const QByteArray& others = {}) {
    return subject(others + "<dc:description><rdf:Alt><rdf:li xml:lang=\"x-default\">" + caption +
                   "</rdf:li></rdf:Alt></dc:description>");
}

const QByteArray& rawPicture(std::uint32_t seed) {
    static const QByteArray first = dngFile(SportsScene(320, 200, 1));
    static const QByteArray second = dngFile(SportsScene(320, 200, 2));
    return seed == 1 ? first : second;
}

const QByteArray& jpegPicture(std::uint32_t seed) {
    static const QByteArray first = jpegFile(SportsScene(320, 200, 1).image());
    static const QByteArray second = jpegFile(SportsScene(320, 200, 2).image());
    return seed == 1 ? first : second;
}

QByteArray withSegment(const QByteArray& jpeg, const QByteArray& segment) {
    return jpeg.first(2) + segment + jpeg.sliced(2);
}

/// A folder with an image whose caption is being made while another program works on it.
class ImageMetadataTest : public testing::Test {
protected:
    void write(const QString& name, const QByteArray& bytes) const {
        const QString path = folder.filePath(name);
        QFile::remove(path + u".new"_s);
        QFile file(path + u".new"_s);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        file.close();
        QFile::remove(path);
        ASSERT_TRUE(QFile::rename(path + u".new"_s, path));
    }
    QByteArray read(const QString& name) const {
        QFile file(folder.filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    CaptionSource gather(const QString& image) const {
        CaptionSource source{.facts = ImageMetadata(image).read(zone).facts, .zone = zone, .picture = {}};
        source.picture = seePicture(image, 128, 0.6);
        return source;
    }
    /// What comes of a caption that is written after `meanwhile`; nothing for one that was written.
    std::optional<OvertakenError::Case> writeAfter(const QString& image,
                                                   const std::function<void()>& meanwhile) {
        const CaptionSource source = gather(image);
        meanwhile();
        try {
            ImageMetadata(image).writeCaption(newCaption, source, log);
            return std::nullopt;
        } catch (const OvertakenError& error) {
            return error.kind();
        }
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

TEST_F(ImageMetadataTest, WritesIntoASidecarOnlyWhatItIsStillAbout) {
    using Case = OvertakenError::Case;
    const QByteArray original = sidecarWith("stub", "<photoshop:City>Ghent</photoshop:City>");
    const auto sidecar = [&](const QByteArray& bytes) { write(u"IMG_1.xmp"_s, bytes); };
    const struct {
        std::function<void()> meanwhile;
        std::optional<Case> expected;
    } rows[] = {
        {[] {}, std::nullopt},
        {[&] {
             sidecar(sidecarWith("stub", "<photoshop:City>Ghent</photoshop:City><xmp:Rating>5</xmp:Rating>"));
         },
         std::nullopt},
        {[&] { write(u"IMG_1.DNG"_s, rawPicture(1)); }, std::nullopt}, // copied once more
        {[&] { sidecar(sidecarWith("typed by hand", "<photoshop:City>Ghent</photoshop:City>")); },
         Case::captionEdited},
        {[&] { sidecar(sidecarWith("stub", "<photoshop:City>Bruges</photoshop:City>")); },
         Case::factsChanged},
        {[&] { sidecar(sidecarWith("typed by hand", "<photoshop:City>Bruges</photoshop:City>")); },
         Case::captionAndFactsEdited},
        {[&] {
             sidecar(QByteArray(original).replace(
                 "</rdf:Alt>", "<rdf:li xml:lang=\"en-US\">typed by hand</rdf:li></rdf:Alt>"));
         },
         Case::captionEdited},
        {[&] { sidecar(sidecarWith(" stub\n", "<photoshop:City>Ghent</photoshop:City>")); }, std::nullopt},
        {[&] { write(u"IMG_1.DNG"_s, rawPicture(2)); }, Case::pictureReplaced},
        {[&] { QFile::remove(raw); }, Case::pictureReplaced},
    };
    for (const auto& row : rows) {
        write(u"IMG_1.DNG"_s, rawPicture(1));
        sidecar(original);
        QByteArray left;
        EXPECT_EQ(writeAfter(raw,
                             [&] {
                                 row.meanwhile();
                                 left = read(u"IMG_1.xmp"_s);
                             }),
                  row.expected);
        if (row.expected) {
            EXPECT_EQ(read(u"IMG_1.xmp"_s), left);
        } else {
            EXPECT_EQ(captionOf(raw), newCaption);
        }
    }
}

TEST_F(ImageMetadataTest, WritesIntoAJpegOnlyWhatItIsStillAbout) {
    using Case = OvertakenError::Case;
    const auto withCaption = [](const QByteArray& caption, std::uint32_t seed = 1) {
        return withSegment(jpegPicture(seed),
                           iptcSegment(utf8Declared + iptc(90, "Ghent") + iptc(120, caption)));
    };
    const struct {
        QByteArray meanwhile;
        std::optional<Case> expected;
    } rows[] = {
        {withCaption("stub"), std::nullopt}, // copied once more
        {withSegment(withCaption("stub"), segment(0xFE, "rated")), std::nullopt},
        {withCaption("typed by hand"), Case::captionEdited},
        {withSegment(
             withCaption("stub"),
             packetSegment(subject("<dc:description><rdf:Alt><rdf:li xml:lang=\"x-default\">typed by hand"
                                   "</rdf:li></rdf:Alt></dc:description>"))),
         Case::captionEdited},
        {withSegment(jpegPicture(1), iptcSegment(utf8Declared + iptc(90, "Bruges") + iptc(120, "stub"))),
         Case::factsChanged},
        {withCaption("stub", 2), Case::pictureReplaced},
    };
    for (const auto& row : rows) {
        write(u"IMG_2.JPG"_s, withCaption("stub"));
        EXPECT_EQ(writeAfter(jpeg, [&] { write(u"IMG_2.JPG"_s, row.meanwhile); }), row.expected);
        if (row.expected) {
            EXPECT_EQ(read(u"IMG_2.JPG"_s), row.meanwhile);
        } else {
            EXPECT_EQ(captionOf(jpeg), newCaption);
        }
    }
}

TEST_F(ImageMetadataTest, FindsASidecarWhateverTheCaseOfItsExtension) {
    write(u"IMG_1.DNG"_s, rawPicture(1));
    write(u"IMG_1.Xmp"_s, sidecarWith("mixed"));
    EXPECT_EQ(captionOf(raw), u"mixed"_s);
    write(u"IMG_1.XMP"_s, sidecarWith("capitals"));
    EXPECT_EQ(captionOf(raw), u"capitals"_s);
    EXPECT_FALSE(ImageMetadata(raw).provideSidecar());
    EXPECT_EQ(writeAfter(raw, [] {}), std::nullopt);
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
    EXPECT_FALSE(ImageMetadata(raw).provideSidecar()) << "somebody may be about to write it";
    QFile sidecar(sidecarPath(raw));
    ASSERT_TRUE(sidecar.open(QIODevice::ReadWrite));
    ASSERT_TRUE(
        sidecar.setFileTime(QDateTime::currentDateTime().addSecs(-60), QFileDevice::FileModificationTime));
    sidecar.close();
    EXPECT_TRUE(ImageMetadata(raw).provideSidecar());
    EXPECT_EQ(captionOf(raw), QString());
}

TEST_F(ImageMetadataTest, FindsOutBeforehandWhatCannotBeWritten) {
    write(u"IMG_1.DNG"_s, rawPicture(1));
    write(u"IMG_1.xmp"_s, sidecarWith("stub"));
    write(u"IMG_2.JPG"_s, jpegPicture(1));
    ImageMetadata(raw).requireEditable(log);
    ImageMetadata(jpeg).requireEditable(log);
    const EditConditions before = EditConditions::of(raw);
    EXPECT_EQ(EditConditions::of(raw), before);

    ASSERT_EQ(::chmod(folder.path().toLocal8Bit().constData(), 0555), 0);
    EXPECT_THROW(ImageMetadata(raw).requireEditable(log), FileError);
    EXPECT_THROW(ImageMetadata(jpeg).requireEditable(log), XMPError);
    EXPECT_NE(EditConditions::of(raw), before);
    ASSERT_EQ(::chmod(folder.path().toLocal8Bit().constData(), 0700), 0);
    EXPECT_EQ(EditConditions::of(raw), before);

    write(u"IMG_2.JPG"_s, withSegment(jpegPicture(1), packetSegment("<x:xmpmeta><dc:description>")));
    EXPECT_THROW(ImageMetadata(jpeg).requireEditable(log), XMPError);
    EXPECT_EQ(log.lines.last(),
              u"[XMPWriter] Nothing was written into IMG_2.JPG, because its XMP packet is damaged."_s);
    write(u"IMG_1.xmp"_s, "<x:xmpmeta");
    EXPECT_THROW(ImageMetadata(raw).requireEditable(log), Error);
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
