// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ImageCheck.h"

#include "core/Error.h"
#include "core/Text.h"
#include "metadata/ImageMetadata.h"
#include "pipeline/CaptionAcceptance.h"

#include <exception>

namespace ostrelle {

namespace {

/// False if a sidecar is missing and cannot be made.
bool provideSidecar(const ImageMetadata& metadata, ImageCheck& check) {
    try {
        check.isSidecarNew = metadata.provideSidecar();
        return true;
    } catch (const std::exception& error) {
        check.sidecarFailure = describe(error);
        return false;
    }
}

/// Metadata that cannot be read have no caption; the image's run logs the reason.
MetadataReading readOrNothing(const ImageMetadata& metadata, const QTimeZone& zone, ImageCheck& check) {
    try {
        MetadataReading reading = metadata.read(zone);
        check.facts = reading.facts;
        check.stamp = reading.image;
        return reading;
    } catch (const std::exception&) {
        return {};
    }
}

ImageCheck checkImage(const QString& path, const SeenImage& image, const QTimeZone& zone) {
    const ImageMetadata metadata(path);
    ImageCheck check;
    check.image = image;
    if (provideSidecar(metadata, check)) {
        check.metadataStamp = MetadataStamp::of(path);
        const MetadataReading reading = readOrNothing(metadata, zone, check);
        check.caption = CaptionJudgement::of(reading.facts.caption);
        check.readerLines = reading.captionLines;
    }
    return check;
}

} // namespace

CaptionJudgement CaptionJudgement::of(const std::optional<QString>& caption) {
    const QString trimmed = caption.value_or(QString()).trimmed();
    if (trimmed.isEmpty()) {
        return {};
    }
    const Verdict verdict = isRealCaption(trimmed) ? Verdict::present : Verdict::tooShort;
    return {.verdict = verdict, .characters = characterCount(trimmed)};
}

QList<ImageCheck> checkImages(const QString& folder, const QList<SeenImage>& images, const QTimeZone& zone) {
    QList<ImageCheck> checks;
    checks.reserve(images.size());
    for (const SeenImage& image : images) {
        checks.append(checkImage(folder + u'/' + image.name, image, zone));
    }
    return checks;
}

} // namespace ostrelle
