// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/bytes/TiffBlock.h"
#include "metadata/rendition/Raster.h"

#include <QByteArrayView>
#include <cstdint>
#include <optional>

namespace ostrelle {

/// Whether a picture comes as its pixels are stored or as the photographer held the camera.
enum class Orientation { asStored, upright };

/// How to move a picture's pixels to show it upright: first swap rows and columns, then take the stored rows
/// from the bottom and the stored columns from the right.
struct PictureTurn {
    bool transposed = false;
    bool fromBottom = false;
    bool fromRight = false;

    bool operator==(const PictureTurn&) const = default;
};

inline constexpr quint16 orientationTag = 0x0112;

/// The turn for the orientation in a TIFF directory; nothing when it has none, or not one of EXIF's eight.
std::optional<PictureTurn> turnOf(const TiffBlock& block, const TiffDirectory& directory);

/// The same for the first directory of an EXIF block.
std::optional<PictureTurn> turnOfExif(QByteArrayView tiff);

/// The picture, turned.
Raster<std::uint8_t> turned(Raster<std::uint8_t> stored, PictureTurn turn);

} // namespace ostrelle
