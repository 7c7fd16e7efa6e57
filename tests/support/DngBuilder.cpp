// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/DngBuilder.h"

#include <QtEndian>
#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <utility>
#include <vector>

namespace ostrelle {

namespace {

constexpr std::uint16_t blackLevel = 512;
constexpr std::uint16_t whiteLevel = 16383;
/// What the sensor sees of a white surface in daylight, relative to green.
constexpr LinearColor neutral = {0.48F, 1.0F, 0.66F};
/// CIE XYZ (D65) to linear sRGB, by rows.
constexpr std::array<float, 9> xyzToSrgb = {3.2405F, -1.5371F, -0.4985F, -0.9693F, 1.8760F,
                                            0.0416F, 0.0556F,  -0.2040F, 1.0572F};

template <typename Integer>
void append(QByteArray& bytes, Integer value) {
    const Integer little = qToLittleEndian(value);
    bytes.append(reinterpret_cast<const char*>(&little), sizeof little);
}

/// One directory of a TIFF file under construction.
class Directory {
public:
    void addShorts(std::uint16_t tag, std::initializer_list<std::uint16_t> values) {
        QByteArray bytes;
        for (const std::uint16_t value : values) {
            append(bytes, value);
        }
        add(tag, 3, values.size(), bytes);
    }
    void addLong(std::uint16_t tag, qsizetype value) {
        QByteArray bytes;
        append(bytes, static_cast<std::uint32_t>(value));
        add(tag, 4, 1, bytes);
    }
    void addBytes(std::uint16_t tag, const QByteArray& bytes) {
        add(tag, 1, static_cast<std::size_t>(bytes.size()), bytes);
    }
    void addText(std::uint16_t tag, const QByteArray& text) {
        const QByteArray ended = text + '\0';
        add(tag, 2, static_cast<std::size_t>(ended.size()), ended);
    }
    /// Fractions of 10,000; `signedType` as DNG wants it for matrices.
    void addRationals(std::uint16_t tag, const std::vector<float>& values, bool signedType) {
        QByteArray bytes;
        for (const float value : values) {
            append(bytes, static_cast<std::int32_t>(std::lround(value * 10000)));
            append(bytes, std::int32_t{10000});
        }
        add(tag, signedType ? 10 : 5, values.size(), bytes);
    }

    /// Bytes of the directory with the values that do not fit into it.
    qsizetype size() const {
        qsizetype bytes = 6 + 12 * static_cast<qsizetype>(m_entries.size());
        for (const Entry& entry : m_entries) {
            bytes += entry.value.size() > 4 ? entry.value.size() + entry.value.size() % 2 : 0;
        }
        return bytes;
    }

    /// The directory as it stands at `offset` of the file; `next` is where the following one stands, or 0.
    QByteArray written(qsizetype offset, qsizetype next) const {
        std::vector<Entry> entries = m_entries;
        std::sort(entries.begin(), entries.end(),
                  [](const Entry& a, const Entry& b) { return a.tag < b.tag; });
        QByteArray table;
        QByteArray values;
        append(table, static_cast<std::uint16_t>(entries.size()));
        const qsizetype valuesStart = offset + 6 + 12 * static_cast<qsizetype>(entries.size());
        for (const Entry& entry : entries) {
            append(table, entry.tag);
            append(table, entry.type);
            append(table, entry.count);
            if (entry.value.size() <= 4) {
                table += entry.value.leftJustified(4, '\0');
            } else {
                append(table, static_cast<std::uint32_t>(valuesStart + values.size()));
                values += entry.value.leftJustified(entry.value.size() + entry.value.size() % 2, '\0');
            }
        }
        append(table, static_cast<std::uint32_t>(next));
        return table + values;
    }

private:
    struct Entry {
        std::uint16_t tag;
        std::uint16_t type;
        std::uint32_t count;
        QByteArray value;
    };

    void add(std::uint16_t tag, std::uint16_t type, std::size_t count, const QByteArray& value) {
        m_entries.push_back({tag, type, static_cast<std::uint32_t>(count), value});
    }

    std::vector<Entry> m_entries;
};

std::vector<float> colorMatrix() {
    std::vector<float> matrix(xyzToSrgb.begin(), xyzToSrgb.end());
    for (std::size_t i = 0; i < matrix.size(); ++i) {
        matrix[i] *= neutral[i / 3];
    }
    return matrix;
}

Directory pictureDirectory(const SportsScene& scene, int orientation, qsizetype dataOffset) {
    Directory directory;
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

Directory thumbnailDirectory(const QByteArray& thumbnail, qsizetype dataOffset) {
    Directory directory;
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
            // Read noise and, growing with the light, shot noise.
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
    append(file, static_cast<std::uint32_t>(start));
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
