// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/RenditionFixture.h"
#include "metadata/rendition/CutShort.h"
#include "standins/RawBuilder.h"
#include "standins/TiffBuilder.h"
#include "support/Corpus.h"

#include <sys/stat.h>

#include <QFileInfo>
#include <algorithm>

namespace ostrelle {
namespace {

using namespace Qt::StringLiterals;
using Case = ExtractError::Case;

const JpegOptions progressive = with(&JpegOptions::progressive, true);
const JpegOptions restarts = with(&JpegOptions::restartRows, 1);

TEST_F(Renditions, cannotOpenWhatIsNoImage) {
    ASSERT_EQ(::mkfifo(QFile::encodeName(path(u"pipe"_s)).constData(), 0600), 0);
    const QByteArray noise = jpegFile(SportsScene(400, 300, 2).image()).mid(1000, 4000);
    for (const QString& wrong :
         {path(u"missing"_s), path(u"."_s), path(u"pipe"_s), file({}), file("A note.\n", u"note"_s),
          file(noise, u"noise"_s), file("\x89PNG\r\n\x1A\n and no more", u"png"_s)}) {
        EXPECT_EQ(failure(wrong), Case::cannotOpen) << wrong.toStdString();
    }
}

TEST_F(Renditions, refuseAPictureThatIsCutShort) {
    const SportsScene scene(400, 300, 2);
    const QByteArray whole[] = {jpegFile(scene.image()), jpegFile(scene.image(), progressive),
                                jpegFile(scene.image(), restarts), dngFile(scene)};
    for (const QByteArray& bytes : whole) {
        EXPECT_EQ(failure(file(bytes)), std::nullopt);
        for (const double part : {0.002, 0.05, 0.3, 0.6, 0.9, 0.95}) {
            const auto length = static_cast<qsizetype>(part * static_cast<double>(bytes.size()));
            EXPECT_EQ(failure(file(bytes.left(length))), Case::cannotCreateThumbnail) << part;
        }
    }
    // A copy cut short by a full disk keeps its length but ends in zeros, some of which decode as blocks.
    for (QByteArray zeros : {whole[0], jpegFile(scene.image(), with(&JpegOptions::quality, 99))}) {
        zeros.replace(zeros.size() / 2, zeros.size() / 2 + 1, QByteArray(zeros.size() / 2 + 1, '\0'));
        EXPECT_EQ(failure(file(zeros)), Case::cannotCreateThumbnail);
    }
}

TEST_F(Renditions, seeWhatIsMissingAtTheEnd) {
    const SportsScene scene(400, 300, 2);
    for (const QByteArray& bytes : {jpegFile(scene.image()), jpegFile(scene.image(), progressive),
                                    jpegFile(scene.image(), restarts), dngFile(scene)}) {
        EXPECT_FALSE(isCutShort(file(bytes + "appended")));
        EXPECT_TRUE(isCutShort(file(bytes.chopped(1))));
        EXPECT_TRUE(isCutShort(file(bytes.first(bytes.size() / 2))));
    }
    for (const RawKind kind : rawKinds) {
        const QByteArray bytes = rawFile(kind, {.preview = jpegFile(scene.image())});
        EXPECT_FALSE(isCutShort(file(bytes))) << static_cast<int>(kind);
        EXPECT_TRUE(isCutShort(file(bytes.first(bytes.size() / 2)))) << static_cast<int>(kind);
    }
    EXPECT_FALSE(isCutShort(file("no image")));
}

TEST_F(Renditions, takeAPictureWithSmallDamage) {
    const QImage scene = SportsScene(400, 300, 2).image();
    const QImage plain = picture(jpegFile(scene));
    for (const JpegOptions& options : {JpegOptions{}, restarts, progressive}) {
        const QByteArray jpeg = jpegFile(scene, options);
        EXPECT_LT(difference(picture(jpeg.chopped(2)), plain), 1.0) << "without its end marker";
        EXPECT_LT(difference(picture(jpeg + QByteArray(2000, '\0') + "appended"), plain), 1.0);
    }
    QByteArray flipped = jpegFile(scene, restarts);
    flipped[flipped.size() / 2] = flipped[flipped.size() / 2] == '\x55' ? '\x56' : '\x55';
    EXPECT_LT(difference(picture(flipped), plain), 6.0);
}

/// The JPEG with this size in its frame header.
QByteArray claiming(QByteArray jpeg, std::pair<quint16, quint16> size) {
    const qsizetype frame = jpeg.indexOf("\xFF\xC0") + 5;
    return jpeg.replace(frame, 4, tiffNumber(size.second, true) + tiffNumber(size.first, true));
}

TEST_F(Renditions, refuseHostileSizes) {
    const QByteArray jpeg = jpegFile(flat(Qt::gray));
    for (const std::pair<quint16, quint16> size :
         {std::pair{65535, 65535}, {65500, 65500}, {20001, 20000}, {65500, 6000}, {0, 10}}) {
        EXPECT_EQ(failure(file(claiming(jpeg, size))), Case::cannotCreateThumbnail) << size.first;
    }
    // ImageWidth and ImageLength of the only directory, as longs.
    const QByteArray dng = dngFile(SportsScene(320, 200, 1));
    for (const quint32 side : {0U, 20000U, 65500U, 0xFFFFFFFFU}) {
        QByteArray claimed = dng;
        for (const QByteArray& tag : {QByteArray("\0\1\4\0\1\0\0\0", 8), QByteArray("\1\1\4\0\1\0\0\0", 8)}) {
            claimed.replace(claimed.indexOf(tag) + 8, 4, tiffNumber(side, false));
        }
        EXPECT_NE(failure(file(claimed)), std::nullopt) << side;
    }
}

TEST_F(Renditions, refuseAPictureOfThousandsOfScans) {
    const QByteArray jpeg = jpegFile(flat(Qt::gray, {2000, 2000}), progressive);
    const qsizetype lastScan = jpeg.lastIndexOf("\xFF\xDA");
    const QByteArray scan = jpeg.mid(lastScan).chopped(2);
    EXPECT_EQ(failure(file(jpeg.left(lastScan) + scan.repeated(10000) + jpeg.right(2))),
              Case::cannotCreateThumbnail);
}

TEST(RenditionCorpus, jpegFilesGiveAPictureOrAnError) {
    const QStringList files = corpusFiles(u"jpeg"_s);
    SKIP_WITHOUT_CORPUS(files);
    int pictures = 0;
    for (const QString& path : files) {
        try {
            const QImage picture = QImage::fromData(render(path), "JPEG");
            ASSERT_FALSE(picture.isNull()) << path.toStdString();
            ASSERT_LE(std::max(picture.width(), picture.height()), limit) << path.toStdString();
            ++pictures;
        } catch (const ExtractError& error) {
            ASSERT_NE(error.kind(), Case::cannotEncodeJPEG) << path.toStdString();
        }
    }
    // Most of the corpus is whole; the rest was cut to its headers or is damaged on purpose.
    EXPECT_GT(pictures, files.size() / 2);
}

TEST(RenditionCorpus, onlyWholeRawFilesGiveAPicture) {
    const QStringList files = corpusFiles(u"raw"_s);
    SKIP_WITHOUT_CORPUS(files);
    const QStringList whole = {
        u"kimg__RAW_KODAK_C330_FORMAT_NONE_YRGB.raw"_s,
        u"rawtran__IMG_5952.CR2"_s,
        u"tinydng__colorchart.dng"_s,
        // Complete JPEGs under the name of a RAW file.
        u"mdx__Issue_247-1.nef"_s,
        u"mdx__Issue_247-2.nef"_s,
        // Shown by its preview.
        u"exiv2__Canon-R6-pruned.CR3"_s,
    };
    for (const QString& path : files) {
        EXPECT_EQ(failure(path) == std::nullopt, whole.contains(QFileInfo(path).fileName()))
            << path.toStdString();
    }
}

} // namespace
} // namespace ostrelle
