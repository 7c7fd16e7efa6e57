// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/rendition/PictureTurn.h"
#include "metadata/rendition/Raster.h"

#include <QString>
#include <cstdint>

namespace ostrelle {

/// A RAW picture in sRGB, 3 channels, with the camera's white balance.
struct RawPicture {
    Raster<std::uint8_t> pixels;
    PictureTurn turn; ///< as LibRaw found it in the file
};

/// Which pictures to decode: LibRaw can decode some of a camera it does not know, but can only guess their
/// colours.
enum class RawColors { known, any };

/// Decodes a RAW file, scaled down so that the longer side is at most `limit` pixels, unrotated. Throws
/// ExtractError: cannotOpen when it is not a RAW file that LibRaw knows.
RawPicture decodeRaw(const QString& path, int limit, RawColors colors);

} // namespace ostrelle
