// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/facts/ImageFacts.h"
#include "metadata/rendition/RAWPreviewExtractor.h"
#include "platform/FileStamp.h"

#include <QString>
#include <QTimeZone>
#include <optional>

namespace ostrelle {

/// The picture that the model saw.
struct SeenPicture {
    std::optional<FileStamp> stamp; ///< of the image file, from before the rendition was made
    Rendition rendition;            ///< upright
    double maxPixelSize = 0;        ///< with which it was made
    double quality = 0;             ///< likewise
};

/// What a caption was made from. It is written only where all of this still holds.
struct CaptionSource {
    ImageFacts facts;
    QTimeZone zone; ///< in which the facts' dates became days
    SeenPicture picture;
};

/// Makes the upright rendition of an image. Throws ExtractError.
SeenPicture seePicture(const QString& image, double maxPixelSize, double quality);

/// Throws OvertakenError unless the facts are still those of the source. A caption that is merely blank in
/// another way, or composed of other characters for the same letters, is the same.
void requireSameFacts(const ImageFacts& now, const ImageFacts& source);

/// Throws OvertakenError when another picture has taken the image's place. A file that was merely touched or
/// given other metadata, which is told by rendering it once more, is still the same picture.
void requireSamePicture(const QString& image, const SeenPicture& seen);

} // namespace ostrelle
