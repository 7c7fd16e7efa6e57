// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/bytes/TiffBlock.h"
#include "metadata/rendition/Raster.h"

#include <QByteArrayView>
#include <cstdint>
#include <optional>

namespace ostrelle {

/// Whether a picture comes as its pixels are stored, or as the photographer held the camera.
enum class Orientation { asStored, upright };

/// How the pixels of a picture are moved to show it upright. First rows and columns change places, then
/// the stored rows are taken from the bottom, the stored columns from the right.
struct PictureTurn {
    bool transposed = false;
    bool fromBottom = false;
    bool fromRight = false;

    bool operator==(const PictureTurn&) const = default;
};

inline constexpr quint16 orientationTag = 0x0112;

/// The turn that a TIFF directory asks for; nothing when it has no orientation, or one that is none of EXIF's
/// eight.
std::optional<PictureTurn> turnOf(const TiffBlock& block, const TiffDirectory& directory);

/// The same of the first directory of an EXIF block.
std::optional<PictureTurn> turnOfExif(QByteArrayView tiff);

/// The picture, turned.
Raster<std::uint8_t> turned(Raster<std::uint8_t> stored, PictureTurn turn);

} // namespace ostrelle
