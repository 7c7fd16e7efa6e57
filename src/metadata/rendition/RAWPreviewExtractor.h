// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/rendition/PictureTurn.h"
#include "metadata/rendition/Raster.h"

#include <QByteArray>
#include <QString>

namespace ostrelle {

/// The small JPEG of an image that the model is sent, and what it was made from.
struct Rendition {
    enum class Source { picture, embeddedPreview };

    QByteArray jpeg;
    Source source = Source::picture;

    // Of an embedded preview only:
    PixelSize previewSize;
    QString reason; ///< why the RAW picture could not be used, a phrase without a full stop
};

/// Makes the small JPEG of an image that the model is sent.
class RAWPreviewExtractor {
public:
    /// The picture of a RAW or JPEG file, which is told by its content, as a JPEG in sRGB: decoded from the
    /// full picture and encoded anew, its longer side at most `maxPixelSize` pixels, never enlarged. A RAW
    /// file that LibRaw cannot decode is shown by the largest JPEG that the camera put into it, from 1,000
    /// pixels on. `quality` runs from 0 to 1. Safe on any thread. Throws ExtractError.
    Rendition extractPreview(const QString& path, double maxPixelSize, double quality,
                             Orientation orientation = Orientation::asStored) const;
};

} // namespace ostrelle
