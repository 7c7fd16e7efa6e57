// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/rendition/Raster.h"

#include <QByteArray>
#include <cstdint>

namespace ostrelle {

/// Encodes the sRGB picture (3 channels) as a baseline JPEG without metadata; `quality` is libjpeg's, 1 to
/// 100. Throws ExtractError with cannotEncodeJPEG.
QByteArray encodeJpeg(const Raster<std::uint8_t>& picture, int quality);

} // namespace ostrelle
