// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QImage>

namespace ostrelle {

/// Options of a JPEG file.
struct JpegOptions {
    enum class Colors {
        rgb,
        gray,
        cmyk,      ///< 255 is full ink, no Adobe segment
        adobeCmyk, ///< 0 is full ink, with Adobe's segment
        adobeYcck, ///< the same, stored as luminance, chrominance and black
    };

    int quality = 92;
    Colors colors = Colors::rgb;
    bool progressive = false;
    int restartRows = 0;      ///< a restart marker after this many rows of blocks; none for 0
    int orientation = 0;      ///< the EXIF orientation; no EXIF segment for 0
    QByteArray exifThumbnail; ///< a JPEG for the EXIF segment
    QByteArray profile;       ///< an ICC profile; none when empty
};

/// The picture as a JPEG file. CMYK consists of the complements of its colours, with black taken out.
QByteArray jpegFile(const QImage& picture, const JpegOptions& options = {});

/// The file with an XMP packet of at most 65,000 bytes in a new APP1 segment before all others.
QByteArray jpegWithXmp(const QByteArray& jpeg, const QByteArray& packet);

} // namespace ostrelle
