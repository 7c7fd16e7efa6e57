// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/rendition/ToneCurve.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace ostrelle {

namespace {

constexpr int levels = 65536;
constexpr int darkestWhite = levels / 16;

/// The level that 99 per cent of the pixels stay below in their brightest channel. Cameras leave headroom for
/// highlights that a rendition does not keep: without this, most pictures come out dark.
int whiteLevel(const Raster<std::uint16_t>& linear) {
    std::vector<std::uint32_t> histogram(levels);
    for (std::size_t i = 0; i < linear.samples.size(); i += 4) {
        const std::uint16_t* pixel = linear.samples.data() + i;
        ++histogram[std::max({pixel[0], pixel[1], pixel[2]})];
    }
    std::size_t brighter = 0;
    int level = levels - 1;
    while (level > darkestWhite &&
           (brighter += histogram[static_cast<std::size_t>(level)]) * 100 < linear.pixelCount()) {
        --level;
    }
    return level;
}

/// sRGB's transfer function (IEC 61966-2-1) from 0 to 1.
double encoded(double light) {
    return light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

std::vector<std::uint8_t> toneTable(int white) {
    std::vector<std::uint8_t> table(levels, 255);
    for (int level = 0; level < white; ++level) {
        const double value = encoded(static_cast<double>(level) / white);
        table[static_cast<std::size_t>(level)] = static_cast<std::uint8_t>(std::lround(255 * value));
    }
    return table;
}

} // namespace

Raster<std::uint8_t> renderTones(const Raster<std::uint16_t>& linear, bool monochrome) {
    const std::vector<std::uint8_t> table = toneTable(whiteLevel(linear));
    const std::array<std::size_t, 3> channels =
        monochrome ? std::array<std::size_t, 3>{0, 0, 0} : std::array<std::size_t, 3>{0, 1, 2};
    Raster<std::uint8_t> result(linear.size, 3);
    std::uint8_t* out = result.samples.data();
    for (std::size_t i = 0; i < linear.samples.size(); i += 4) {
        for (const std::size_t channel : channels) {
            *out++ = table[linear.samples[i + channel]];
        }
    }
    return result;
}

} // namespace ostrelle
