// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/RAWPreviewExtractor.h"

#include "metadata/ExtractError.h"
#include "support/Corpus.h"
#include "support/DngBuilder.h"
#include "support/JpegBuilder.h"
#include "support/SportsScene.h"

#include <gtest/gtest.h>
#include <lcms2.h>
#include <sys/stat.h>

#include <QColorSpace>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtEndian>
#include <cmath>
#include <cstdlib>
#include <future>
#include <limits>
#include <optional>

namespace ostrelle {
namespace {

using namespace Qt::StringLiterals;
using Case = ExtractError::Case;
using Colors = JpegOptions::Colors;

/// Small, so that small scenes do.
constexpr int limit = 256;

QByteArray render(const QString& path, double maxPixelSize = limit, double quality = 0.6) {
    return RAWPreviewExtractor().extractPreview(path, maxPixelSize, quality);
}

/// The case that the extraction fails with, or none.
std::optional<Case> failure(const QString& path, double maxPixelSize = limit) {
    try {
        render(path, maxPixelSize);
    } catch (const ExtractError& error) {
        return error.kind();
    }
    return std::nullopt;
}

class Renditions : public testing::Test {
protected:
    QString file(const QByteArray& bytes, const QString& name = u"picture"_s) const {
        const QString path = m_folder.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes), bytes.size());
        return path;
    }
    QImage picture(const QByteArray& bytes, double maxPixelSize = limit, double quality = 0.95) const {
        const QImage image = QImage::fromData(render(file(bytes), maxPixelSize, quality), "JPEG");
        EXPECT_FALSE(image.isNull());
        return image;
    }
    QString path(const QString& name) const { return m_folder.filePath(name); }

private:
    QTemporaryDir m_folder;
};

/// The mean difference of two pictures' samples, of 255.
double difference(const QImage& one, const QImage& other) {
    EXPECT_EQ(one.size(), other.size());
    double sum = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const QRgb a = one.pixel(x, y);
            const QRgb b = other.pixel(x, y);
            sum +=
                std::abs(qRed(a) - qRed(b)) + std::abs(qGreen(a) - qGreen(b)) + std::abs(qBlue(a) - qBlue(b));
        }
    }
    return sum / 3 / one.width() / one.height();
}

QImage flat(QColor color, QSize size = {64, 48}) {
    QImage image(size, QImage::Format_RGB888);
    image.fill(color);
    return image;
}

/// The colour in the middle.
QColor middle(const QImage& image) {
    return image.pixelColor(image.width() / 2, image.height() / 2);
}

void expectColor(QColor color, int red, int green, int blue) {
    EXPECT_NEAR(color.red(), red, 4);
    EXPECT_NEAR(color.green(), green, 4);
    EXPECT_NEAR(color.blue(), blue, 4);
}

TEST_F(Renditions, fitTheLongerSideAndNeverEnlarge) {
    struct Row {
        QSize source;
        QSize expected;
    };
    const Row jpegs[] = {
        {{1, 1}, {1, 1}},
        {{300, 200}, {300, 200}},
        {{1024, 683}, {1024, 683}},
        {{1025, 1025}, {1024, 1024}},
        {{2000, 1331}, {1024, 681}},
        {{1331, 2003}, {680, 1024}},
        {{3001, 1}, {1024, 1}},
        {{4000, 1499}, {1024, 384}},
    };
    for (const Row& row : jpegs) {
        EXPECT_EQ(picture(jpegFile(flat(Qt::gray, row.source)), 1024).size(), row.expected)
            << row.source.width();
    }
    // A RAW picture is decoded at half the size where that is large enough.
    const Row raws[] = {
        {{160, 108}, {160, 108}}, {{376, 250}, {256, 170}}, {{350, 550}, {163, 256}},
        {{511, 341}, {256, 171}}, {{1000, 34}, {256, 9}},
    };
    for (const Row& row : raws) {
        const SportsScene scene(row.source.width(), row.source.height(), 1);
        EXPECT_EQ(picture(dngFile(scene)).size(), row.expected) << row.source.width();
    }
}

TEST_F(Renditions, truncateTheLimitToWholePixels) {
    const QByteArray jpeg = jpegFile(flat(Qt::gray, {400, 200}));
    EXPECT_EQ(picture(jpeg, 100.9).size(), QSize(100, 50));
    EXPECT_EQ(picture(jpeg, 1).size(), QSize(1, 1));
    EXPECT_EQ(picture(jpeg, 1e15).size(), QSize(400, 200));
    for (const double none : {0.9, 0.0, -1.0}) {
        EXPECT_EQ(failure(file(jpeg), none), Case::cannotCreateThumbnail) << none;
    }
}

TEST(RenditionLimit, StopsTheProgramWhenItIsNoInteger) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // the decoder's threads do not survive a fork
    for (const double wrong : {std::nan(""), std::numeric_limits<double>::infinity(), 1e19, -1e19}) {
        EXPECT_DEATH(render(u"none.jpg"_s, wrong), "maximum pixel size") << wrong;
    }
}

TEST_F(Renditions, showTheWholePicture) {
    const QImage scene = SportsScene(690, 460, 3).image();
    const QImage expected = scene.scaled(256, 171, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    for (const bool progressive : {false, true}) {
        JpegOptions options;
        options.progressive = progressive;
        EXPECT_LT(difference(picture(jpegFile(scene, options)), expected), 6.0) << progressive;
    }
}

TEST_F(Renditions, showARawPictureInItsColoursExposedForItsHighlights) {
    // At half the size and at the full size of the sensor.
    for (const int width : {690, 384}) {
        const SportsScene scene(width, width * 2 / 3, 3);
        // The sky has 0.8 of white in its brightest channel and is brought to it.
        const QImage expected =
            scene.image(1.25F).scaled(256, 171, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        for (const float exposure : {1.0F, 0.5F, 0.25F}) {
            DngOptions options;
            options.exposure = exposure;
            EXPECT_LT(difference(picture(dngFile(scene, options)), expected), 8.0)
                << width << ", " << exposure;
        }
    }
}

TEST_F(Renditions, leaveOrientationAndThumbnailsAlone) {
    const SportsScene scene(540, 360, 5);
    const QByteArray thumbnail = jpegFile(flat(Qt::red, {160, 120}));
    const QByteArray plainJpeg = render(file(jpegFile(scene.image())));
    const QByteArray plainDng = render(file(dngFile(scene)));
    for (const int orientation : {3, 6, 8}) {
        JpegOptions jpeg;
        DngOptions dng;
        jpeg.orientation = dng.orientation = orientation;
        jpeg.exifThumbnail = dng.thumbnail = thumbnail;
        EXPECT_EQ(render(file(jpegFile(scene.image(), jpeg))), plainJpeg) << orientation;
        EXPECT_EQ(render(file(dngFile(scene, dng))), plainDng) << orientation;
    }
    EXPECT_EQ(QImage::fromData(plainDng).size(), QSize(256, 171));
}

TEST_F(Renditions, encodeAnewAtTheQualityAskedFor) {
    // The first quantizer of the luminance table, which the quality sets: 16, scaled by 200 - 2 * quality
    // per cent from 50 on.
    const QByteArray jpeg = jpegFile(SportsScene(300, 200, 1).image());
    const auto quantizer = [](const QByteArray& bytes) {
        return int{bytes.at(bytes.indexOf("\xFF\xDB") + 5)};
    };
    const QByteArray low = render(file(jpeg), limit, 0.6);
    const QByteArray high = render(file(jpeg), limit, 0.85);
    EXPECT_EQ(quantizer(low), 13);
    EXPECT_EQ(quantizer(high), 5);
    EXPECT_NE(low, jpeg);
    EXPECT_FALSE(low.contains("Exif"));
}

TEST_F(Renditions, areTheSameEachTimeAndOnEachThread) {
    const QString jpeg = file(jpegFile(SportsScene(800, 600, 1).image()), u"jpeg"_s);
    const QString dng = file(dngFile(SportsScene(600, 400, 2)), u"dng"_s);
    const QByteArray expectedJpeg = render(jpeg);
    const QByteArray expectedDng = render(dng);
    std::vector<std::future<bool>> runs;
    for (int i = 0; i < 4; ++i) {
        runs.push_back(std::async(std::launch::async, [&] { return render(jpeg) == expectedJpeg; }));
        runs.push_back(std::async(std::launch::async, [&] { return render(dng) == expectedDng; }));
    }
    for (std::future<bool>& run : runs) {
        EXPECT_TRUE(run.get());
    }
}

TEST_F(Renditions, tellTheKindByTheContent) {
    const QByteArray jpeg = jpegFile(flat(Qt::gray));
    const QByteArray dng = dngFile(SportsScene(320, 200, 1));
    EXPECT_EQ(render(file(jpeg, u"a.nef"_s)), render(file(jpeg, u"a.jpg"_s)));
    EXPECT_EQ(render(file(dng, u"b.jpg"_s)), render(file(dng, u"b.dng"_s)));
}

// Colours ----------------------------------------------------------------------------------------------

TEST_F(Renditions, bringTheColoursOfAProfileToSrgb) {
    const QImage scene = SportsScene(600, 400, 4).image();
    const QImage expected = picture(jpegFile(scene));
    for (const auto space : {QColorSpace::AdobeRgb, QColorSpace::DisplayP3, QColorSpace::ProPhotoRgb}) {
        QImage source = scene;
        source.setColorSpace(QColorSpace::SRgb);
        source.convertToColorSpace(space);
        JpegOptions options;
        options.quality = 98;
        const double ignored = difference(picture(jpegFile(source, options)), expected);
        options.profile = QColorSpace(space).iccProfile();
        const double converted = difference(picture(jpegFile(source, options)), expected);
        EXPECT_LT(converted, 4.0) << space;
        EXPECT_GT(ignored, 2 * converted) << space;
    }
}

QByteArray saved(cmsHPROFILE profile) {
    cmsUInt32Number size = 0;
    EXPECT_TRUE(cmsSaveProfileToMem(profile, nullptr, &size));
    QByteArray bytes(size, Qt::Uninitialized);
    EXPECT_TRUE(cmsSaveProfileToMem(profile, bytes.data(), &size));
    cmsCloseProfile(profile);
    return bytes;
}

/// A gray profile whose values are linear light.
QByteArray linearGrayProfile() {
    cmsToneCurve* curve = cmsBuildGamma(nullptr, 1.0);
    const QByteArray bytes = saved(cmsCreateGrayProfile(cmsD50_xyY(), curve));
    cmsFreeToneCurve(curve);
    return bytes;
}

/// A CMYK profile made of a table: black ink darkens, the others do nothing.
QByteArray blackOnlyProfile() {
    cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
    cmsSetProfileVersion(profile, 2.1);
    cmsSetDeviceClass(profile, cmsSigOutputClass);
    cmsSetColorSpace(profile, cmsSigCmykData);
    cmsSetPCS(profile, cmsSigLabData);
    cmsPipeline* pipeline = cmsPipelineAlloc(nullptr, 4, 3);
    cmsStage* table = cmsStageAllocCLut16bit(nullptr, 5, 4, 3, nullptr);
    const cmsSAMPLER16 sampler = [](const cmsUInt16Number* inks, cmsUInt16Number* lab,
                                    void*) -> cmsInt32Number {
        const cmsCIELab color{100 * (1 - inks[3] / 65535.0), 0, 0};
        cmsFloat2LabEncodedV2(lab, &color);
        return TRUE;
    };
    EXPECT_TRUE(cmsStageSampleCLut16bit(table, sampler, nullptr, 0));
    EXPECT_TRUE(cmsPipelineInsertStage(pipeline, cmsAT_BEGIN, table));
    EXPECT_TRUE(cmsWriteTag(profile, cmsSigAToB0Tag, pipeline));
    cmsPipelineFree(pipeline);
    return saved(profile);
}

TEST_F(Renditions, bringGrayAndInkProfilesToSrgb) {
    JpegOptions gray;
    gray.colors = Colors::gray;
    expectColor(middle(picture(jpegFile(flat(QColor(55, 55, 55)), gray))), 55, 55, 55);
    gray.profile = linearGrayProfile();
    // A linear 55 of 255 is 128 in sRGB's curve.
    expectColor(middle(picture(jpegFile(flat(QColor(55, 55, 55)), gray))), 128, 128, 128);

    for (const Colors colors : {Colors::cmyk, Colors::adobeCmyk, Colors::adobeYcck}) {
        JpegOptions inks;
        inks.colors = colors;
        inks.profile = blackOnlyProfile();
        // Saturated red is magenta and yellow without black, which this paper does not show.
        expectColor(middle(picture(jpegFile(flat(Qt::red), inks))), 255, 255, 255);
        // Half black ink is L* 50.
        expectColor(middle(picture(jpegFile(flat(QColor(128, 128, 128)), inks))), 119, 119, 119);
    }
}

TEST_F(Renditions, convertInksWithoutAProfile) {
    const QImage scene = SportsScene(240, 160, 4).image();
    for (const Colors colors : {Colors::cmyk, Colors::adobeCmyk, Colors::adobeYcck}) {
        JpegOptions options;
        options.colors = colors;
        EXPECT_LT(difference(picture(jpegFile(scene, options)), scene), 6.0) << static_cast<int>(colors);
    }
}

TEST_F(Renditions, passOverAProfileThatIsOfNoUse) {
    const QImage scene = SportsScene(300, 200, 4).image();
    const QByteArray plain = render(file(jpegFile(scene)));
    const QByteArray adobe = QColorSpace(QColorSpace::AdobeRgb).iccProfile();
    for (const QByteArray& profile : {adobe.left(100), adobe.left(200), QByteArray(500, 'x'),
                                      QByteArray(adobe).replace("rXYZ", "zzzz"), linearGrayProfile()}) {
        JpegOptions options;
        options.profile = profile;
        EXPECT_EQ(render(file(jpegFile(scene, options))), plain) << profile.size();
    }
}

// Files that give no picture ----------------------------------------------------------------------------

TEST_F(Renditions, cannotOpenWhatIsNoImage) {
    ASSERT_EQ(::mkfifo(QFile::encodeName(path(u"pipe"_s)).constData(), 0600), 0);
    QByteArray noise(4000, '\0');
    for (qsizetype i = 0; i < noise.size(); ++i) {
        noise[i] = static_cast<char>(static_cast<int>(255 * sceneNoise(1, static_cast<int>(i), 0)));
    }
    for (const QString& wrong :
         {path(u"missing"_s), path(u"."_s), path(u"pipe"_s), file({}), file("A note.\n", u"note"_s),
          file(noise, u"noise"_s), file("\x89PNG\r\n\x1A\n and no more", u"png"_s)}) {
        EXPECT_EQ(failure(wrong), Case::cannotOpen) << wrong.toStdString();
    }
}

TEST_F(Renditions, refuseAPictureThatIsCutShort) {
    const SportsScene scene(400, 300, 2);
    JpegOptions progressive;
    progressive.progressive = true;
    JpegOptions restarts;
    restarts.restartRows = 1;
    const QByteArray whole[] = {jpegFile(scene.image()), jpegFile(scene.image(), progressive),
                                jpegFile(scene.image(), restarts), dngFile(scene)};
    for (const QByteArray& bytes : whole) {
        EXPECT_EQ(failure(file(bytes)), std::nullopt);
        for (const double part : {0.002, 0.05, 0.3, 0.6, 0.9, 0.95}) {
            const auto length = static_cast<qsizetype>(part * static_cast<double>(bytes.size()));
            EXPECT_EQ(failure(file(bytes.left(length))), Case::cannotCreateThumbnail) << part;
        }
    }
    // A copy that ran out of space keeps its length and ends in zeros.
    QByteArray zeros = whole[0];
    zeros.replace(zeros.size() / 2, zeros.size() / 2, QByteArray(zeros.size() / 2, '\0'));
    EXPECT_EQ(failure(file(zeros)), Case::cannotCreateThumbnail);
}

TEST_F(Renditions, takeAPictureWithSmallDamage) {
    const QImage scene = SportsScene(400, 300, 2).image();
    JpegOptions restarts;
    restarts.restartRows = 1;
    JpegOptions progressive;
    progressive.progressive = true;
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

TEST_F(Renditions, refuseARawPictureThatIsBlack) {
    DngOptions options;
    options.exposure = 0;
    EXPECT_EQ(failure(file(dngFile(SportsScene(640, 480, 1), options))), Case::cannotCreateThumbnail);
}

/// The JPEG with another size in its frame header.
QByteArray claiming(QByteArray jpeg, int width, int height) {
    const qsizetype frame = jpeg.indexOf("\xFF\xC0") + 5;
    for (const auto& [at, value] : {std::pair{frame, height}, {frame + 2, width}}) {
        jpeg[at] = static_cast<char>(value >> 8);
        jpeg[at + 1] = static_cast<char>(value);
    }
    return jpeg;
}

TEST_F(Renditions, refuseHostileSizes) {
    const QByteArray jpeg = jpegFile(flat(Qt::gray));
    for (const auto& [width, height] :
         {std::pair{65535, 65535}, {65500, 65500}, {20001, 20000}, {65500, 6000}, {0, 10}}) {
        EXPECT_EQ(failure(file(claiming(jpeg, width, height))), Case::cannotCreateThumbnail) << width;
    }
    // ImageWidth and ImageLength of the only directory, as longs.
    const QByteArray dng = dngFile(SportsScene(320, 200, 1));
    for (const quint32 side : {0U, 20000U, 65500U, 0xFFFFFFFFU}) {
        QByteArray claimed = dng;
        for (const char* tag : {"\x00\x01\x04\x00\x01\x00\x00\x00", "\x01\x01\x04\x00\x01\x00\x00\x00"}) {
            const qsizetype value = claimed.indexOf(QByteArray(tag, 8)) + 8;
            qToLittleEndian(side, claimed.data() + value);
        }
        EXPECT_NE(failure(file(claimed)), std::nullopt) << side;
    }
}

TEST_F(Renditions, refuseAPictureOfThousandsOfScans) {
    JpegOptions progressive;
    progressive.progressive = true;
    const QByteArray jpeg = jpegFile(flat(Qt::gray, {2000, 2000}), progressive);
    const qsizetype lastScan = jpeg.lastIndexOf("\xFF\xDA");
    const QByteArray scan = jpeg.mid(lastScan).chopped(2);
    EXPECT_EQ(failure(file(jpeg.left(lastScan) + scan.repeated(10000) + jpeg.right(2))),
              Case::cannotCreateThumbnail);
}

TEST(ExtractErrorTest, saysWhatAndWhy) {
    EXPECT_EQ(ExtractError(Case::cannotEncodeJPEG).localizedDescription(),
              u"The reduced picture could not be encoded as JPEG."_s);
    EXPECT_EQ(ExtractError(Case::cannotOpen, u"the file is empty"_s).localizedDescription(),
              u"The image could not be opened: the file is empty."_s);
}

// Files of real cameras and programs ---------------------------------------------------------------------

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
    };
    for (const QString& path : files) {
        EXPECT_EQ(failure(path) == std::nullopt, whole.contains(QFileInfo(path).fileName()))
            << path.toStdString();
    }
}

} // namespace
} // namespace ostrelle
