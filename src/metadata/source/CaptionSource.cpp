// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/source/CaptionSource.h"

#include "metadata/facts/ImageKind.h"
#include "metadata/facts/OvertakenError.h"
#include "metadata/rendition/ExtractError.h"

namespace ostrelle {

namespace {

/// Programs that set a rating may also tidy up an empty caption or change its Unicode composition.
QString comparable(const std::optional<QString>& caption) {
    return caption.value_or(QString()).trimmed().normalized(QString::NormalizationForm_C);
}

bool isSamePicture(const QString& image, const SeenPicture& seen) {
    if (seen.stamp && seen.stamp == FileStamp::at(image)) {
        return true;
    }
    try {
        ImageFile file(image);
        return seePicture(file).rendition.jpeg == seen.rendition.jpeg;
    } catch (const ExtractError&) {
        return false;
    }
}

} // namespace

SeenPicture seePicture(ImageFile& image) {
    constexpr double longestSide = 1024; // pixels
    constexpr double jpegQuality = 0.6;
    constexpr double rawQuality = 0.85;
    const double quality = isJpegImage(image.path()) ? jpegQuality : rawQuality;
    return {.stamp = image.stamp(),
            .rendition =
                RAWPreviewExtractor().extractPreview(image, longestSide, quality, Orientation::upright)};
}

void requireSameFacts(const ImageFacts& now, const ImageFacts& source) {
    using Case = OvertakenError::Case;
    ImageFacts others = now;
    others.caption = source.caption;
    others.otherCaptions = source.otherCaptions;
    const bool isSameElse = others == source;
    const bool isSameCaption =
        comparable(now.caption) == comparable(source.caption) && now.otherCaptions == source.otherCaptions;
    if (!isSameCaption) {
        throw OvertakenError(isSameElse ? Case::captionEdited : Case::captionAndFactsEdited);
    }
    if (!isSameElse) {
        throw OvertakenError(Case::factsChanged);
    }
}

void requireSamePicture(const QString& image, const SeenPicture& seen) {
    if (!isSamePicture(image, seen)) {
        throw OvertakenError(OvertakenError::Case::pictureReplaced);
    }
}

} // namespace ostrelle
