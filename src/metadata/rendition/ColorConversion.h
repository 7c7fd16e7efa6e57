// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/rendition/Raster.h"

#include <QByteArray>
#include <cstdint>

namespace ostrelle {

/// What a picture's channels mean. `invertedCmyk` has 0 for full ink, as Adobe's programs store it.
enum class ColorModel { gray, rgb, cmyk, invertedCmyk };

/// The number of channels in the model.
constexpr int channelCount(ColorModel model) {
    return model == ColorModel::gray ? 1 : model == ColorModel::rgb ? 3 : 4;
}

/// Converts the picture to sRGB, 3 channels. `profile` is the ICC profile of the source; if it is empty,
/// damaged or for another model, the values count as sRGB, or as ideal inks.
Raster<std::uint8_t> convertToSrgb(Raster<std::uint8_t> picture, ColorModel model, const QByteArray& profile);

} // namespace ostrelle
