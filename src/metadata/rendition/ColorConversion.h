// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/rendition/Raster.h"

#include <QByteArray>
#include <cstdint>

namespace ostrelle {

/// What the channels of a picture mean. `invertedCmyk` has 0 for full ink, as Adobe's programs store it.
enum class ColorModel { gray, rgb, cmyk, invertedCmyk };

/// Channels of a pixel in the model.
constexpr int channelCount(ColorModel model) {
    return model == ColorModel::gray ? 1 : model == ColorModel::rgb ? 3 : 4;
}

/// The picture in sRGB, 3 channels. `profile` is the ICC profile of the source; one that is empty, damaged
/// or made for another model is passed over, and the values are taken as sRGB, or as ideal inks.
Raster<std::uint8_t> convertToSrgb(Raster<std::uint8_t> picture, ColorModel model, const QByteArray& profile);

} // namespace ostrelle
