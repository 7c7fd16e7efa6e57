// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/rendition/Raster.h"

#include <cstdint>

namespace ostrelle {

/// Renders linear light for the screen: exposed by at most four stops so that all but the brightest hundredth
/// of the pixels keep their detail, then in sRGB's curve, 8 bits. 4 channels, the first 3 red, green and
/// blue; a `monochrome` picture uses only the first.
Raster<std::uint8_t> renderTones(const Raster<std::uint16_t>& linear, bool monochrome);

} // namespace ostrelle
