// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ostrelle {

/// The size of a picture in pixels.
struct PixelSize {
    int width = 0;
    int height = 0;

    bool operator==(const PixelSize&) const = default;
};

/// Larger pictures are refused before any memory is allocated: no camera makes them, but a hostile header can
/// claim them in a few bytes.
constexpr int maximumSide = 65500;
constexpr std::int64_t maximumPixels = 400'000'000;

constexpr bool isDecodable(PixelSize size) {
    return size.width > 0 && size.height > 0 && size.width <= maximumSide && size.height <= maximumSide &&
           std::int64_t{size.width} * size.height <= maximumPixels;
}

constexpr int longerSide(PixelSize size) {
    return size.width > size.height ? size.width : size.height;
}

/// Scales the size down so that the longer side is at most `limit`; never enlarges. The shorter side is
/// rounded to the nearest pixel, at least 1.
constexpr PixelSize fittedSize(PixelSize size, int limit) {
    const std::int64_t longer = longerSide(size);
    if (longer <= limit) {
        return size;
    }
    const auto scaled = [longer, limit](int side) {
        const std::int64_t rounded = (2 * std::int64_t{side} * limit + longer) / (2 * longer);
        return rounded < 1 ? 1 : static_cast<int>(rounded);
    };
    return {scaled(size.width), scaled(size.height)};
}

/// A picture in memory: rows from the top, pixels from the left, channels interleaved.
template <typename Sample>
struct Raster {
    Raster() = default;
    Raster(PixelSize pixels, int channelCount)
        : size(pixels)
        , channels(channelCount)
        , samples(rowLength() * static_cast<std::size_t>(pixels.height)) {}

    /// Samples in a row.
    std::size_t rowLength() const {
        return static_cast<std::size_t>(size.width) * static_cast<std::size_t>(channels);
    }
    std::size_t pixelCount() const {
        return static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
    }
    Sample* row(int y) { return samples.data() + rowLength() * static_cast<std::size_t>(y); }
    const Sample* row(int y) const { return samples.data() + rowLength() * static_cast<std::size_t>(y); }

    PixelSize size;
    int channels = 0;
    std::vector<Sample> samples;
};

} // namespace ostrelle
