// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/bytes/ByteSplice.h"
#include "metadata/bytes/ImageFile.h"
#include "metadata/rendition/ColorConversion.h"
#include "metadata/rendition/PictureTurn.h"
#include "metadata/rendition/Raster.h"

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <optional>

namespace ostrelle {

/// A decoded JPEG, in its stored colours.
struct JpegPicture {
    Raster<std::uint8_t> pixels;
    ColorModel model = ColorModel::rgb;
    QByteArray profile;              ///< the ICC profile, unchecked; empty when the file has none
    std::optional<PictureTurn> turn; ///< as requested by its first EXIF segment, if at all
};

/// Decodes a JPEG file, scaled down so that the longer side is at most `limit` pixels, unrotated. Needs
/// memory for a few source rows, or for the coefficients of a progressive file (up to 512 MiB). Throws
/// ExtractError.
JpegPicture decodeJpeg(const QString& path, int limit);

/// The same for a JPEG in a range of another file.
JpegPicture decodeJpeg(const QString& path, ByteRange range, int limit);

/// Decodes a file of any kind; nothing unless it starts as a JPEG does. Also throws ExtractError::cannotOpen
/// for a file that does not exist or is empty.
std::optional<JpegPicture> decodeIfJpeg(ImageFile& file, int limit);

/// The full size of that picture from its header. Throws ExtractError when it is not a decodable JPEG.
PixelSize jpegSize(const QString& path, ByteRange range);

} // namespace ostrelle
