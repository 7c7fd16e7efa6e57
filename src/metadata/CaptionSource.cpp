// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/CaptionSource.h"

#include "metadata/ExtractError.h"
#include "metadata/OvertakenError.h"

namespace ostrelle {

namespace {

bool isSamePicture(const QString& image, const SeenPicture& seen) {
    if (seen.stamp && seen.stamp == FileStamp::at(image)) {
        return true;
    }
    try {
        return seePicture(image, seen.maxPixelSize, seen.quality).rendition.jpeg == seen.rendition.jpeg;
    } catch (const ExtractError&) {
        return false;
    }
}

} // namespace

SeenPicture seePicture(const QString& image, double maxPixelSize, double quality) {
    SeenPicture picture{.stamp = FileStamp::at(image), // of what is read, or of what was before
                        .rendition = {},
                        .maxPixelSize = maxPixelSize,
                        .quality = quality};
    picture.rendition =
        RAWPreviewExtractor().extractPreview(image, maxPixelSize, quality, Orientation::upright);
    return picture;
}

void requireSameFacts(const ImageFacts& now, const ImageFacts& source) {
    if (now == source) {
        return;
    }
    ImageFacts withOldCaption = now;
    withOldCaption.caption = source.caption;
    throw OvertakenError(withOldCaption == source ? OvertakenError::Case::captionEdited
                                                  : OvertakenError::Case::factsChanged);
}

void requireSamePicture(const QString& image, const SeenPicture& seen) {
    if (!isSamePicture(image, seen)) {
        throw OvertakenError(OvertakenError::Case::pictureReplaced);
    }
}

} // namespace ostrelle
