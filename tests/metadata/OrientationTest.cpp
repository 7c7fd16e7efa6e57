// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/RenditionFixture.h"
#include "standins/RawBuilder.h"
#include "standins/TiffBuilder.h"

#include <QTransform>

namespace ostrelle {
namespace {

using namespace Qt::StringLiterals;

/// How a picture stored with this orientation is shown.
QImage shown(const QImage& stored, int orientation) {
    static constexpr int clockwise[] = {0, 0, 180, 180, 90, 90, 270, 270};
    const bool isMirrored = orientation == 2 || orientation == 4 || orientation == 5 || orientation == 7;
    return stored.transformed(QTransform().rotate(clockwise[orientation - 1])).mirrored(isMirrored, false);
}

QByteArray jpegWith(const QImage& scene, int orientation) {
    return jpegFile(scene, with(&JpegOptions::orientation, orientation));
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
        expectShown(dngFile(small, with(&DngOptions::orientation, orientation)), orientation);
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

TEST_F(UprightRenditions, areLeftAsTheyAreByADamagedOrientation) {
    const QByteArray usual("\x12\x01\x03\x00\x01\x00\x00\x00\x01", 9);
    const QByteArray dng = dngFile(small);
    for (const auto& [type, value] : {std::pair{3, 0}, {3, 9}, {3, 65535}, {4, 6}, {2, 6}}) {
        QByteArray damaged = dng;
        damaged[dng.indexOf(usual) + 2] = static_cast<char>(type);
        damaged.replace(dng.indexOf(usual) + 8, 2, tiffNumber(static_cast<quint16>(value), false));
        expectShown(damaged, 1);
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
