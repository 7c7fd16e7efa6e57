// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/RenditionFixture.h"

#include <lcms2.h>

#include <QColorSpace>
#include <cmath>
#include <future>
#include <limits>
#include <vector>

namespace ostrelle {
namespace {

using namespace Qt::StringLiterals;
using Case = ExtractError::Case;
using Colors = JpegOptions::Colors;

/// The colour in the middle.
QColor middle(const QImage& image) {
    return image.pixelColor(image.width() / 2, image.height() / 2);
}

TEST_F(Renditions, fitTheLongerSideAndNeverEnlarge) {
    using SourceAndExpected = std::pair<QSize, QSize>;
    const SourceAndExpected jpegs[] = {
        {{1, 1}, {1, 1}},
        {{300, 200}, {300, 200}},
        {{1024, 683}, {1024, 683}},
        {{1025, 1025}, {1024, 1024}},
        {{2000, 1331}, {1024, 681}},
        {{1331, 2003}, {680, 1024}},
        {{3001, 1}, {1024, 1}},
        {{4000, 1499}, {1024, 384}},
    };
    for (const auto& [source, expected] : jpegs) {
        EXPECT_EQ(picture(jpegFile(flat(Qt::gray, source)), 1024).size(), expected) << source.width();
    }
    // A RAW picture is decoded at half size if that is large enough.
    const SourceAndExpected raws[] = {
        {{160, 108}, {160, 108}}, {{376, 250}, {256, 170}}, {{350, 550}, {163, 256}},
        {{511, 341}, {256, 171}}, {{1000, 34}, {256, 9}},
    };
    for (const auto& [source, expected] : raws) {
        const SportsScene scene(source.width(), source.height(), 1);
        EXPECT_EQ(picture(dngFile(scene)).size(), expected) << source.width();
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
        const JpegOptions options = with(&JpegOptions::progressive, progressive);
        EXPECT_LT(difference(picture(jpegFile(scene, options)), expected), 6.0) << progressive;
    }
}

TEST_F(Renditions, showARawPictureInItsColoursExposedForItsHighlights) {
    // At half size and at full size.
    for (const int width : {690, 384}) {
        const SportsScene scene(width, width * 2 / 3, 3);
        // The sky's brightest channel is at 0.8 of white; the exposure raises it to white.
        const QImage expected =
            scene.image(1.25F).scaled(256, 171, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        for (const float exposure : {1.0F, 0.5F, 0.25F}) {
            const DngOptions options = with(&DngOptions::exposure, exposure);
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
        const auto jpeg =
            with(&JpegOptions::exifThumbnail, thumbnail, with(&JpegOptions::orientation, orientation));
        const auto dng = with(&DngOptions::thumbnail, thumbnail, with(&DngOptions::orientation, orientation));
        EXPECT_EQ(render(file(jpegFile(scene.image(), jpeg))), plainJpeg) << orientation;
        EXPECT_EQ(render(file(dngFile(scene, dng))), plainDng) << orientation;
    }
    EXPECT_EQ(QImage::fromData(plainDng).size(), QSize(256, 171));
}

TEST_F(Renditions, encodeAnewAtTheQualityAskedFor) {
    // The quality sets the first luminance quantizer: 16, scaled by 200 - 2 * quality per cent from 50 on.
    const QByteArray jpeg = jpegFile(SportsScene(300, 200, 1).image());
    const auto quantizer = [](const QByteArray& bytes) {
        return int{bytes.at(bytes.indexOf("\xFF\xDB") + 5)};
    };
    EXPECT_EQ(quantizer(render(file(jpeg), limit, 0.6)), 13);
    EXPECT_EQ(quantizer(render(file(jpeg), limit, 0.85)), 5);
}

TEST_F(Renditions, areTheSameEachTimeAndOnEachThread) {
    const QString jpeg = file(jpegFile(SportsScene(800, 600, 1).image()), u"jpeg"_s);
    const QString dng = file(dngFile(SportsScene(600, 400, 2)), u"dng"_s);
    const QByteArray expected = render(jpeg) + render(dng);
    std::vector<std::future<QByteArray>> runs;
    for (int i = 0; i < 4; ++i) {
        runs.push_back(std::async(std::launch::async, [&] { return render(jpeg) + render(dng); }));
    }
    for (std::future<QByteArray>& run : runs) {
        EXPECT_TRUE(run.get() == expected);
    }
}

TEST_F(Renditions, tellTheKindByTheContent) {
    const QByteArray jpeg = jpegFile(flat(Qt::gray));
    const QByteArray dng = dngFile(SportsScene(320, 200, 1));
    EXPECT_EQ(render(file(jpeg, u"a.nef"_s)), render(file(jpeg, u"a.jpg"_s)));
    EXPECT_EQ(render(file(dng, u"b.jpg"_s)), render(file(dng, u"b.dng"_s)));
}

TEST_F(Renditions, bringTheColoursOfAProfileToSrgb) {
    const QImage scene = SportsScene(600, 400, 4).image();
    const QImage expected = picture(jpegFile(scene));
    for (const auto space : {QColorSpace::AdobeRgb, QColorSpace::DisplayP3, QColorSpace::ProPhotoRgb}) {
        QImage source = scene;
        source.setColorSpace(QColorSpace::SRgb);
        source.convertToColorSpace(space);
        JpegOptions options = with(&JpegOptions::quality, 98);
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

/// A CMYK profile from a table: black ink darkens, the other inks do nothing.
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
    const auto expectShown = [this](QColor stored, const JpegOptions& options, int red, int green, int blue) {
        const QColor shown = middle(picture(jpegFile(flat(stored), options)));
        EXPECT_NEAR(shown.red(), red, 4);
        EXPECT_NEAR(shown.green(), green, 4);
        EXPECT_NEAR(shown.blue(), blue, 4);
    };
    const JpegOptions gray = with(&JpegOptions::colors, Colors::gray);
    expectShown(QColor(55, 55, 55), gray, 55, 55, 55);
    // A linear 55 of 255 is 128 in sRGB's curve.
    expectShown(QColor(55, 55, 55), with(&JpegOptions::profile, linearGrayProfile(), gray), 128, 128, 128);
    for (const Colors colors : {Colors::cmyk, Colors::adobeCmyk, Colors::adobeYcck}) {
        const JpegOptions inks =
            with(&JpegOptions::profile, blackOnlyProfile(), with(&JpegOptions::colors, colors));
        // Saturated red is magenta and yellow without black, and this paper shows only black.
        expectShown(Qt::red, inks, 255, 255, 255);
        // Half black ink is L* 50.
        expectShown(QColor(128, 128, 128), inks, 119, 119, 119);
    }
}

TEST_F(Renditions, convertInksWithoutAProfile) {
    const QImage scene = SportsScene(240, 160, 4).image();
    for (const Colors colors : {Colors::cmyk, Colors::adobeCmyk, Colors::adobeYcck}) {
        const QByteArray jpeg = jpegFile(scene, with(&JpegOptions::colors, colors));
        EXPECT_LT(difference(picture(jpeg), scene), 6.0) << static_cast<int>(colors);
    }
}

TEST_F(Renditions, passOverAProfileThatIsOfNoUse) {
    const QImage scene = SportsScene(300, 200, 4).image();
    const QByteArray plain = render(file(jpegFile(scene)));
    const QByteArray adobe = QColorSpace(QColorSpace::AdobeRgb).iccProfile();
    for (const QByteArray& profile : {adobe.left(100), adobe.left(200), QByteArray(500, 'x'),
                                      QByteArray(adobe).replace("rXYZ", "zzzz"), linearGrayProfile()}) {
        const QByteArray jpeg = jpegFile(scene, with(&JpegOptions::profile, profile));
        EXPECT_EQ(render(file(jpeg)), plain) << profile.size();
    }
}

} // namespace
} // namespace ostrelle
