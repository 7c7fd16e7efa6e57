// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/PictureTurn.h"

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
        {.transposed = true, .fromBottom = true},                     // 6: to be turned clockwise
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
    Raster<std::uint8_t> result(turn.transposed ? PixelSize{height, width} : stored.size, stored.channels);
    std::uint8_t* out = result.samples.data();
    for (int y = 0; y < result.size.height; ++y) {
        for (int x = 0; x < result.size.width; ++x) {
            const int row = turn.transposed ? x : y;
            const int column = turn.transposed ? y : x;
            const std::uint8_t* pixel =
                stored.row(turn.fromBottom ? height - 1 - row : row) +
                std::ptrdiff_t{turn.fromRight ? width - 1 - column : column} * stored.channels;
            out = std::copy_n(pixel, stored.channels, out);
        }
    }
    return result;
}

} // namespace ostrelle
