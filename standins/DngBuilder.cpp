// SPDX-License-Identifier: GPL-3.0-or-later
#include "standins/DngBuilder.h"

#include "standins/TiffBuilder.h"

#include <QtEndian>
#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace ostrelle {

namespace {

constexpr std::uint16_t blackLevel = 512;
constexpr std::uint16_t whiteLevel = 16383;
/// The sensor's response to a white surface in daylight, relative to green.
constexpr LinearColor neutral = {0.48F, 1.0F, 0.66F};
/// CIE XYZ (D65) to linear sRGB, by rows.
constexpr std::array<float, 9> xyzToSrgb = {3.2405F, -1.5371F, -0.4985F, -0.9693F, 1.8760F,
                                            0.0416F, 0.0556F,  -0.2040F, 1.0572F};

std::vector<float> colorMatrix() {
    std::vector<float> matrix(xyzToSrgb.begin(), xyzToSrgb.end());
    for (std::size_t i = 0; i < matrix.size(); ++i) {
        matrix[i] *= neutral[i / 3];
    }
    return matrix;
}

TiffDirectoryBuilder pictureDirectory(const SportsScene& scene, int orientation, qsizetype dataOffset) {
    TiffDirectoryBuilder directory;
    directory.addLong(254, 0);                      // NewSubfileType: the main picture
    directory.addLong(256, scene.width());          // ImageWidth
    directory.addLong(257, scene.height());         // ImageLength
    directory.addShorts(258, {16});                 // BitsPerSample
    directory.addShorts(259, {1});                  // Compression: none
    directory.addShorts(262, {32803});              // PhotometricInterpretation: colour filter array
    directory.addText(271, "Ostrelle");             // Make
    directory.addText(272, "Ostrelle Test Camera"); // Model
    directory.addLong(273, dataOffset);             // StripOffsets
    directory.addShorts(274, {static_cast<std::uint16_t>(orientation)});
    directory.addShorts(277, {1});                                         // SamplesPerPixel
    directory.addLong(278, scene.height());                                // RowsPerStrip
    directory.addLong(279, qsizetype{2} * scene.width() * scene.height()); // StripByteCounts
    directory.addShorts(284, {1});                                         // PlanarConfiguration
    directory.addShorts(33421, {2, 2});                                    // CFARepeatPatternDim
    directory.addBytes(33422, QByteArray("\0\1\1\2", 4));                  // CFAPattern: RG, GB
    directory.addBytes(50706, QByteArray("\1\4\0\0", 4));                  // DNGVersion
    directory.addBytes(50707, QByteArray("\1\1\0\0", 4));                  // DNGBackwardVersion
    directory.addText(50708, "Ostrelle Test Camera");                      // UniqueCameraModel
    directory.addBytes(50710, QByteArray("\0\1\2", 3));                    // CFAPlaneColor
    directory.addShorts(50711, {1});                                       // CFALayout: rectangular
    directory.addShorts(50714, {blackLevel});
    directory.addShorts(50717, {whiteLevel});
    directory.addRationals(50721, colorMatrix(), true);                         // ColorMatrix1
    directory.addRationals(50728, {neutral[0], neutral[1], neutral[2]}, false); // AsShotNeutral
    directory.addShorts(50778, {21});                                           // CalibrationIlluminant1: D65
    return directory;
}

TiffDirectoryBuilder thumbnailDirectory(const QByteArray& thumbnail, qsizetype dataOffset) {
    TiffDirectoryBuilder directory;
    directory.addLong(254, 1);                // NewSubfileType: a reduced picture
    directory.addShorts(259, {6});            // Compression: JPEG
    directory.addLong(513, dataOffset);       // JPEGInterchangeFormat
    directory.addLong(514, thumbnail.size()); // JPEGInterchangeFormatLength
    return directory;
}

QByteArray sensorData(const SportsScene& scene, const DngOptions& options) {
    QByteArray data(qsizetype{2} * scene.width() * scene.height(), Qt::Uninitialized);
    char* out = data.data();
    for (int y = 0; y < scene.height(); ++y) {
        for (int x = 0; x < scene.width(); ++x, out += 2) {
            const auto channel = static_cast<std::size_t>(x % 2 + y % 2);
            const float light = scene.at(x, y)[channel] * neutral[channel] * options.exposure;
            const float range = whiteLevel - blackLevel;
            // Read noise, and shot noise that grows with the light.
            const float noise = (sceneNoise(options.seed, x, y) - 0.5F) * (12 + 160 * std::sqrt(light));
            const float level = std::clamp(blackLevel + light * range + noise, 0.0F, float{whiteLevel});
            qToLittleEndian(static_cast<std::uint16_t>(level), out);
        }
    }
    return data;
}

} // namespace

QByteArray dngFile(const SportsScene& scene, const DngOptions& options) {
    constexpr qsizetype start = 8;
    const qsizetype pictureEnd = start + pictureDirectory(scene, options.orientation, 0).size();
    const qsizetype directoriesEnd = pictureEnd + thumbnailDirectory(options.thumbnail, 0).size();
    const qsizetype thumbnailOffset = options.thumbnail.isEmpty() ? pictureEnd : directoriesEnd;
    const qsizetype dataOffset = thumbnailOffset + options.thumbnail.size() + options.thumbnail.size() % 2;

    QByteArray file("II*\0", 4);
    file += tiffNumber(static_cast<std::uint32_t>(start), false);
    file += pictureDirectory(scene, options.orientation, dataOffset)
                .written(start, options.thumbnail.isEmpty() ? 0 : pictureEnd);
    if (!options.thumbnail.isEmpty()) {
        file += thumbnailDirectory(options.thumbnail, thumbnailOffset).written(pictureEnd, 0);
        file += options.thumbnail;
    }
    file.append(dataOffset - file.size(), '\0');
    return file + sensorData(scene, options);
}

} // namespace ostrelle
