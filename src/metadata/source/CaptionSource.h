// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/bytes/ImageFile.h"
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
    Rendition rendition;
};

/// What a caption was made from. The caption is written only while all of this still holds.
struct CaptionSource {
    ImageFacts facts;
    QTimeZone zone; ///< for turning the facts' dates into days
    SeenPicture picture;
};

/// Makes the rendition for the model: upright, at most 1024 pixels on its longer side. Throws ExtractError.
SeenPicture seePicture(ImageFile& image);

/// Throws OvertakenError unless the facts still match the source. Captions that differ only in how they are
/// blank, or in Unicode composition, match.
void requireSameFacts(const ImageFacts& now, const ImageFacts& source);

/// Throws OvertakenError when another picture has taken the image's place. A file that was merely touched or
/// given other metadata is still the same picture; rendering it again tells.
void requireSamePicture(const QString& image, const SeenPicture& seen);

} // namespace ostrelle
