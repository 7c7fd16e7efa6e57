// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/rendition/Raster.h"

#include <cstdint>

namespace ostrelle {

/// A picture of linear light as it is shown: exposed so that all but the brightest hundredth of its pixels
/// keep their detail, by at most four stops, then in sRGB's curve, 8 bits. 4 channels, of which the first 3
/// are red, green and blue; a `monochrome` picture has its light in the first alone.
Raster<std::uint8_t> renderTones(const Raster<std::uint16_t>& linear, bool monochrome);

} // namespace ostrelle
