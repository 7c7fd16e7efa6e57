// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/RenditionFixture.h"
#include "standins/RawBuilder.h"

#include <QtEndian>
#include <random>

namespace ostrelle {
namespace {

using namespace Qt::StringLiterals;

class EmbeddedPreviews : public Renditions {
protected:
    QString reason(const QByteArray& bytes) const {
        try {
            rendition(file(bytes));
        } catch (const ExtractError& error) {
            return error.reason();
        }
        return {};
    }

    const QByteArray large = jpegFile(SportsScene(1200, 120, 3).image());
};

TEST_F(EmbeddedPreviews, showARawFileOfAnUnknownCamera) {
    const QImage expected = picture(large);
    for (const RawKind kind : rawKinds) {
        const Rendition shown = rendition(file(rawFile(kind, {.preview = large})));
        EXPECT_EQ(shown.source, Rendition::Source::embeddedPreview) << static_cast<int>(kind);
        EXPECT_EQ(shown.previewSize, (PixelSize{1200, 120}));
        EXPECT_FALSE(shown.reason.isEmpty());
        EXPECT_LT(difference(QImage::fromData(shown.jpeg), expected), 1.0) << static_cast<int>(kind);
    }
}

TEST_F(EmbeddedPreviews, standInOnlyForAPictureThatDoesNotDecode) {
    const SportsScene scene(300, 200, 1);
    const auto source = [this](const QByteArray& bytes) { return rendition(file(bytes)).source; };
    DngOptions options = with(&DngOptions::thumbnail, large);
    const QByteArray decodable = dngFile(scene, options);
    EXPECT_EQ(source(decodable), Rendition::Source::picture);
    // Without ColorMatrix1 the picture has the sensor's colours, and is used only if there is no preview.
    const auto uncoloured = [](QByteArray dng) { return dng.replace("\x21\xC6\x0A", "\xFF\xC6\x0A"); };
    EXPECT_EQ(source(uncoloured(decodable)), Rendition::Source::embeddedPreview);
    EXPECT_EQ(source(uncoloured(dngFile(scene))), Rendition::Source::picture);
    options.exposure = 0;
    EXPECT_EQ(source(dngFile(scene, options)), Rendition::Source::embeddedPreview);
}

TEST_F(EmbeddedPreviews, areNoThumbnails) {
    const auto preview = [](QSize size) { return jpegFile(flat(Qt::blue, size)); };
    for (const RawKind kind : rawKinds) {
        EXPECT_TRUE(
            reason(rawFile(kind, {.preview = preview({999, 40})}))
                .contains(u"the preview in the file is too small to show instead (999 x 40 pixels)"_s))
            << static_cast<int>(kind);
        EXPECT_TRUE(reason(rawFile(kind, {.preview = preview({40, 1000})})).isEmpty());
        EXPECT_TRUE(reason(rawFile(kind, {.preview = "no JPEG"})).contains(u"holds no preview"_s));
    }
}

TEST_F(EmbeddedPreviews, areRefusedWhenTheyAreCut) {
    for (const RawKind kind : rawKinds) {
        const QByteArray whole = rawFile(kind, {.preview = large});
        const QByteArray cut = whole.first(whole.indexOf(large) + large.size() / 2);
        EXPECT_TRUE(reason(cut).contains(u"cannot be shown instead: the picture data are cut short"_s))
            << static_cast<int>(kind);
    }
    // The full picture is at the end of a CR3, after a smaller preview.
    const QByteArray smaller = jpegFile(flat(Qt::red, {1000, 100}));
    const QByteArray whole = rawFile(RawKind::cr3, {.preview = large, .smallPreview = smaller});
    EXPECT_EQ(rendition(file(whole)).previewSize.width, 1200);
    EXPECT_EQ(rendition(file(whole.first(whole.indexOf(large) + 2000))).previewSize.width, 1000);
}

TEST_F(EmbeddedPreviews, giveAPictureOrAnErrorWhateverIsDamaged) {
    const QByteArray preview = jpegFile(flat(Qt::green, {1008, 8}));
    std::mt19937 random(7);
    const auto below = [&random](qsizetype bound) {
        return static_cast<qsizetype>(random() % static_cast<unsigned>(bound));
    };
    for (const RawKind kind : rawKinds) {
        const QByteArray whole = rawFile(kind, {.preview = preview, .smallPreview = preview});
        const qsizetype headers = whole.indexOf(preview) + 600;
        for (int i = 0; i < 100; ++i) {
            failure(file(whole.first(below(i % 2 == 0 ? headers : whole.size()))));
            QByteArray mutated = whole;
            for (int change = 0; change < 1 + i % 3; ++change) {
                mutated[below(headers)] = static_cast<char>(i % 4 == 0 ? 0xFF : random());
            }
            failure(file(mutated));
        }
    }
}

TEST_F(EmbeddedPreviews, endSoonInHostileTables) {
    // Both SubIFDs of the first directory are that directory again.
    QByteArray circle = rawFile(RawKind::nef, {.preview = large});
    const qsizetype list = circle.indexOf(QByteArray("\x01\x4A\x00\x04\x00\x00\x00\x02", 8)) + 8;
    const auto offsets = qFromBigEndian<quint32>(circle.constData() + list);
    circle.replace(offsets, 8, QByteArray("\0\0\0\x08\0\0\0\x08", 8));
    EXPECT_TRUE(reason(circle).contains(u"holds no preview"_s));
    // A table of four billion entries, each of which LibRaw would read past the end of the file.
    EXPECT_FALSE(
        reason(QByteArray("II*\0\0\0\0\0IIIICwaR\x18\0\0\0\0\0\0\0\xFF\xFF\xFF\xFF\0\0\0\0", 32)).isEmpty());
    // Boxes with nothing but a header, and boxes in boxes.
    const QByteArray front = rawFile(RawKind::cr3, {.preview = large}).first(24);
    EXPECT_TRUE(reason(front + QByteArray("\0\0\0\x08"
                                          "free",
                                          8)
                                   .repeated(1'000'000))
                    .contains(u"holds no"_s));
    EXPECT_TRUE(reason(front + QByteArray("\0\0\0\0moov", 8).repeated(1'000'000)).contains(u"holds no"_s));
}

} // namespace
} // namespace ostrelle
