// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/Raster.h"

#include <QString>
#include <cstdint>

namespace ostrelle {

/// The picture of a RAW file in sRGB, 3 channels, with its longer side scaled down to at most `limit` pixels,
/// unrotated, with the camera's white balance. Throws ExtractError: cannotOpen when it is no RAW file that
/// LibRaw knows.
Raster<std::uint8_t> decodeRaw(const QString& path, int limit);

} // namespace ostrelle
