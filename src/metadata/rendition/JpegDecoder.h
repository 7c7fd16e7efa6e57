// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/bytes/ByteSplice.h"
#include "metadata/rendition/ColorConversion.h"
#include "metadata/rendition/PictureTurn.h"
#include "metadata/rendition/Raster.h"

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <optional>

namespace ostrelle {

/// A decoded JPEG, in the colours that it stores.
struct JpegPicture {
    Raster<std::uint8_t> pixels;
    ColorModel model = ColorModel::rgb;
    QByteArray profile;              ///< the ICC profile, unchecked; empty when the file has none
    std::optional<PictureTurn> turn; ///< what its first EXIF segment asks for, if it does
};

/// The picture of a JPEG file with its longer side scaled down to at most `limit` pixels, unrotated. Memory
/// is a few rows of the source, for a progressive file its coefficients (up to 512 MiB). Throws ExtractError.
JpegPicture decodeJpeg(const QString& path, int limit);

/// The same of a JPEG that is the given range of another file.
JpegPicture decodeJpeg(const QString& path, ByteRange range, int limit);

/// The full size of that picture, as its header gives it. Throws ExtractError when it is no JPEG that could
/// be decoded.
PixelSize jpegSize(const QString& path, ByteRange range);

} // namespace ostrelle
