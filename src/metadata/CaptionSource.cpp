// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/CaptionSource.h"

#include "metadata/ExtractError.h"
#include "metadata/OvertakenError.h"
#include "metadata/RAWPreviewExtractor.h"

namespace ostrelle {

namespace {

bool isSamePicture(const QString& image, const SeenPicture& seen) {
    if (seen.stamp && seen.stamp == FileStamp::at(image)) {
        return true;
    }
    try {
        return RAWPreviewExtractor().extractPreview(image, seen.maxPixelSize, seen.quality) == seen.rendition;
    } catch (const ExtractError&) {
        return false;
    }
}

} // namespace

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
