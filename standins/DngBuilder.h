// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "standins/SportsScene.h"

#include <QByteArray>
#include <cstdint>

namespace ostrelle {

/// Options of a DNG file.
struct DngOptions {
    int orientation = 1;    ///< the EXIF orientation, 1 to 8
    float exposure = 1;     ///< factor of the scene's light
    QByteArray thumbnail;   ///< a JPEG to embed as the second image; none when empty
    std::uint32_t seed = 1; ///< of the sensor noise
};

/// The scene as a RAW file: a little-endian DNG with one uncompressed image of 14-bit RGGB samples in 16
/// bits, by an "Ostrelle Test Camera".
QByteArray dngFile(const SportsScene& scene, const DngOptions& options = {});

} // namespace ostrelle
