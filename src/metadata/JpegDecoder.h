// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/ColorConversion.h"
#include "metadata/Raster.h"

#include <QByteArray>
#include <QString>
#include <cstdint>

namespace ostrelle {

/// A decoded JPEG, in the colours that it stores.
struct JpegPicture {
    Raster<std::uint8_t> pixels;
    ColorModel model = ColorModel::rgb;
    QByteArray profile; ///< the ICC profile, unchecked; empty when the file has none
};

/// The picture of a JPEG file with its longer side scaled down to at most `limit` pixels, unrotated. Memory
/// is a few rows of the source, for a progressive file its coefficients (up to 512 MiB). Throws ExtractError.
JpegPicture decodeJpeg(const QString& path, int limit);

} // namespace ostrelle
