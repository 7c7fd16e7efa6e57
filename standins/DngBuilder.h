// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <cstdint>

#include "standins/SportsScene.h"

namespace ostrelle {

/// What a DNG file is built with.
struct DngOptions {
    int orientation = 1;    ///< the EXIF orientation, 1 to 8
    float exposure = 1;     ///< factor of the scene's light
    QByteArray thumbnail;   ///< a JPEG to embed as the second image; none when empty
    std::uint32_t seed = 1; ///< of the sensor noise
};

/// The scene as a RAW file: a little-endian DNG with one uncompressed 16-bit image of RGGB sensors of 14
/// bits, by a "Ostrelle Test Camera".
QByteArray dngFile(const SportsScene& scene, const DngOptions& options = {});

} // namespace ostrelle
