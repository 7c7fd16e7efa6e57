// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/rendition/PictureTurn.h"

#include <algorithm>
#include <array>
#include <utility>

namespace ostrelle {

std::optional<PictureTurn> turnOf(const TiffBlock& block, const TiffDirectory& directory) {
    constexpr quint16 shortType = 3;
    static constexpr std::array<PictureTurn, 8> turns = {{
        {},                                                           // 1: as stored
        {.fromRight = true},                                          // 2: mirrored
        {.fromBottom = true, .fromRight = true},                      // 3: upside down
        {.fromBottom = true},                                         // 4: 3, mirrored
        {.transposed = true},                                         // 5: 6, mirrored
        {.transposed = true, .fromBottom = true},                     // to be turned clockwise
        {.transposed = true, .fromBottom = true, .fromRight = true},  // 7: 8, mirrored
        {.transposed = true, .fromBottom = false, .fromRight = true}, // 8: to be turned anticlockwise
    }};
    const std::optional<TiffEntry> entry = directory.find(orientationTag);
    if (!entry || entry->type != shortType || entry->count != 1) {
        return std::nullopt;
    }
    const std::size_t value = block.shortAt(entry->at + 8);
    if (value < 1 || value > turns.size()) {
        return std::nullopt;
    }
    return turns[value - 1];
}

std::optional<PictureTurn> turnOfExif(QByteArrayView tiff) {
    const std::optional<TiffBlock> block = TiffBlock::open(tiff);
    const std::optional<TiffDirectory> directory = block ? block->firstDirectory() : std::nullopt;
    return directory ? turnOf(*block, *directory) : std::nullopt;
}

Raster<std::uint8_t> turned(Raster<std::uint8_t> stored, PictureTurn turn) {
    if (turn == PictureTurn()) {
        return stored;
    }
    const auto [width, height] = stored.size;
    const int channels = stored.channels;
    const auto rowLength = static_cast<std::ptrdiff_t>(stored.rowLength());
    // The steps through the stored samples, and where to begin.
    const std::ptrdiff_t down = turn.fromBottom ? -rowLength : rowLength;
    const std::ptrdiff_t right = turn.fromRight ? -channels : channels;
    const std::ptrdiff_t corner = (turn.fromBottom ? (height - 1) * rowLength : 0) +
                                  (turn.fromRight ? (width - 1) * std::ptrdiff_t{channels} : 0);
    const std::ptrdiff_t alongRow = turn.transposed ? down : right;
    const std::ptrdiff_t alongColumn = turn.transposed ? right : down;

    Raster<std::uint8_t> result(turn.transposed ? PixelSize{height, width} : stored.size, channels);
    std::uint8_t* out = result.samples.data();
    for (int y = 0; y < result.size.height; ++y) {
        std::ptrdiff_t at = corner + y * alongColumn;
        for (int x = 0; x < result.size.width; ++x, at += alongRow) {
            out = std::copy_n(stored.samples.data() + at, channels, out);
        }
    }
    return result;
}

} // namespace ostrelle
