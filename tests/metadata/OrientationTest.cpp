// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/RenditionFixture.h"
#include "support/RawBuilder.h"
#include "support/TiffBuilder.h"

#include <QTransform>

namespace ostrelle {
namespace {

using namespace Qt::StringLiterals;

/// How a picture that is stored with the orientation is shown.
QImage shown(const QImage& stored, int orientation) {
    const auto rotated = [&stored](int clockwise) {
        return stored.transformed(QTransform().rotate(clockwise));
    };
    switch (orientation) {
    case 2:
        return stored.mirrored(true, false);
    case 3:
        return stored.mirrored(true, true);
    case 4:
        return stored.mirrored(false, true);
    case 5:
        return rotated(90).mirrored(true, false);
    case 6:
        return rotated(90);
    case 7:
        return rotated(90).mirrored(false, true);
    case 8:
        return rotated(270);
    default:
        return stored;
    }
}

QByteArray jpegWith(const QImage& scene, int orientation) {
    JpegOptions options;
    options.orientation = orientation;
    return jpegFile(scene, options);
}

class UprightRenditions : public Renditions {
protected:
    void expectShown(const QByteArray& bytes, int orientation) const {
        const QString path = file(bytes);
        const QImage stored = QImage::fromData(rendition(path).jpeg);
        EXPECT_LT(difference(QImage::fromData(rendition(path, Orientation::upright).jpeg),
                             shown(stored, orientation)),
                  3.0)
            << orientation;
    }

    const SportsScene small{300, 200, 3};
    const QImage large = SportsScene(1200, 120, 3).image();
};

TEST_F(UprightRenditions, areTurnedByTheOrientationOfTheFile) {
    for (int orientation = 1; orientation <= 8; ++orientation) {
        expectShown(jpegWith(small.image(), orientation), orientation);
        DngOptions decoded;
        decoded.orientation = orientation;
        expectShown(dngFile(small, decoded), orientation);
        // In directories of both byte orders, in boxes, and in the EXIF of the preview.
        for (const RawKind kind : {RawKind::arw, RawKind::nef, RawKind::cr3}) {
            expectShown(rawFile(kind, {.preview = jpegFile(large), .orientation = orientation}), orientation);
        }
        expectShown(rawFile(RawKind::raf, {.preview = jpegWith(large, orientation)}), orientation);
    }
}

TEST_F(UprightRenditions, areTurnedOnceByThePreviewsOwnOrientation) {
    for (const auto& [own, file, expected] : {std::tuple{6, 6, 6}, {8, 6, 8}, {1, 6, 1}}) {
        expectShown(rawFile(RawKind::rw2, {.preview = jpegWith(large, own), .orientation = file}), expected);
    }
}

/// The file with another type and value in the entry of its orientation, which is `usual`.
QByteArray changed(QByteArray file, bool isBigEndian, QByteArrayView type, quint16 value) {
    const QByteArray usual = isBigEndian ? QByteArray("\x01\x12\x00\x03\x00\x00\x00\x01", 8)
                                         : QByteArray("\x12\x01\x03\x00\x01\x00\x00\x00", 8);
    const qsizetype at = file.indexOf(usual);
    file.replace(at + (isBigEndian ? 3 : 2), 1, type.toByteArray());
    return file.replace(at + 8, 2, tiffNumber(value, isBigEndian));
}

TEST_F(UprightRenditions, areLeftAsTheyAreByADamagedOrientation) {
    const QByteArray jpeg = jpegWith(small.image(), 6);
    const QByteArray dng = dngFile(small);
    for (const auto& [type, value] : {std::pair{"\3", 0}, {"\3", 9}, {"\3", 65535}, {"\4", 6}, {"\2", 6}}) {
        expectShown(changed(jpeg, true, type, static_cast<quint16>(value)), 1);
        expectShown(changed(dng, false, type, static_cast<quint16>(value)), 1);
    }
}

TEST_F(UprightRenditions, takeTheFirstOfSeveralExifSegments) {
    const QByteArray first = jpegWith(small.image(), 6);
    const QByteArray second = jpegWith(small.image(), 3);
    const qsizetype exif = first.indexOf("\xFF\xE1");
    const qsizetype length = 2 + static_cast<quint8>(first[exif + 3]);
    expectShown(QByteArray(second).insert(second.indexOf("\xFF\xE1"), first.sliced(exif, length)), 6);
}

} // namespace
} // namespace ostrelle
