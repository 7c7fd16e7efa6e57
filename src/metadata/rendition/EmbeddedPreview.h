// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/rendition/JpegDecoder.h"
#include "metadata/rendition/RawContents.h"

#include <QString>
#include <vector>

namespace ostrelle {

/// A JPEG that the camera put into a RAW file for its own screen.
struct EmbeddedPreview {
    ByteRange range;
    PixelSize size;

    /// Whether it is large enough to read a jersey number in it; a thumbnail is not.
    bool isLarge() const { return longerSide(size) >= 1000; }
};

/// The JPEGs of a RAW file that can be opened, the largest first.
std::vector<EmbeddedPreview> findPreviews(const QString& path, const RawContents& contents);

/// The picture of a preview, and which it was.
struct PreviewPicture {
    JpegPicture picture;
    PixelSize size; ///< of the whole preview
};

/// The picture of the largest preview, its longer side scaled down to at most `limit` pixels, unrotated. One
/// that is damaged gives way to the next, as long as that is large. Throws ExtractError with a reason that
/// goes on from "the picture could not be decoded, and".
PreviewPicture decodePreview(const QString& path, const std::vector<EmbeddedPreview>& previews, int limit);

} // namespace ostrelle
