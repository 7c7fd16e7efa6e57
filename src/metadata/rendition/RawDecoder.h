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

/// Which pictures are wanted: of a camera that LibRaw does not know it can decode some, but only guess what
/// their colours are.
enum class RawColors { known, any };

/// The picture of a RAW file with its longer side scaled down to at most `limit` pixels, unrotated. Throws
/// ExtractError: cannotOpen when it is no RAW file that LibRaw knows.
RawPicture decodeRaw(const QString& path, int limit, RawColors colors);

} // namespace ostrelle
