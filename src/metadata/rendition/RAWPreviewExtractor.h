// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/bytes/ImageFile.h"
#include "metadata/rendition/PictureTurn.h"
#include "metadata/rendition/Raster.h"

#include <QByteArray>
#include <QString>

namespace ostrelle {

/// The small JPEG of an image that is sent to the model, and what it was made from.
struct Rendition {
    enum class Source { picture, embeddedPreview };

    QByteArray jpeg;
    Source source = Source::picture;

    // Of an embedded preview only:
    PixelSize previewSize;
    QString reason; ///< why the RAW picture was not used, a phrase without a full stop
};

/// Makes the small JPEG of an image that is sent to the model.
class RAWPreviewExtractor {
public:
    /// Decodes the full picture of a RAW or JPEG file, identified by its content, and encodes it as an sRGB
    /// JPEG whose longer side is at most `maxPixelSize` pixels, never enlarged. For a RAW file that LibRaw
    /// cannot decode, uses the camera's largest embedded JPEG, if it has at least 1,000 pixels. `quality`
    /// runs from 0 to 1. Thread-safe. Throws ExtractError.
    Rendition extractPreview(const QString& path, double maxPixelSize, double quality,
                             Orientation orientation = Orientation::asStored) const;
    Rendition extractPreview(ImageFile& file, double maxPixelSize, double quality,
                             Orientation orientation = Orientation::asStored) const;
};

} // namespace ostrelle
