// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/rendition/JpegDecoder.h"
#include "metadata/rendition/RawContents.h"

#include <QString>
#include <vector>

namespace ostrelle {

/// A JPEG that the camera stored in a RAW file for its own screen.
struct EmbeddedPreview {
    ByteRange range;
    PixelSize size;

    /// True when it is large enough to read a jersey number; a thumbnail is not.
    bool isLarge() const { return longerSide(size) >= 1000; }
};

/// The JPEGs of a RAW file that can be opened, largest first.
std::vector<EmbeddedPreview> findPreviews(const QString& path, const RawContents& contents);

/// The picture of a preview, and which preview it was.
struct PreviewPicture {
    JpegPicture picture;
    PixelSize size; ///< of the whole preview
};

/// Decodes the largest preview, scaled down so that its longer side is at most `limit` pixels, unrotated.
/// Skips a damaged preview as long as the next is large. Throws ExtractError with a reason that continues
/// "the picture could not be decoded, and".
PreviewPicture decodePreview(const QString& path, const std::vector<EmbeddedPreview>& previews, int limit);

} // namespace ostrelle
