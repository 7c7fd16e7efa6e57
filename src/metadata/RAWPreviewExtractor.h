// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

namespace ostrelle {

/// Makes the small JPEG of an image that the model is sent.
class RAWPreviewExtractor {
public:
    /// The picture of a RAW or JPEG file, which is told by its content, as a JPEG in sRGB: always decoded
    /// from the full picture and encoded anew, its longer side at most `maxPixelSize` pixels, never enlarged
    /// or rotated. `quality` runs from 0 to 1. Safe on any thread. Throws ExtractError.
    QByteArray extractPreview(const QString& path, double maxPixelSize, double quality) const;
};

} // namespace ostrelle
