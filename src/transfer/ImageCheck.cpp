// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ImageCheck.h"

#include "core/Error.h"
#include "core/Text.h"
#include "pipeline/CaptionAcceptance.h"
#include "pipeline/ImageKind.h"
#include "platform/KeptLines.h"

#include <QFileInfo>
#include <exception>

namespace ostrelle {

namespace {

/// False when there is no sidecar.
bool provideSidecar(const QString& sidecar, const XMPWriter& xmp, ImageCheck& check) {
    if (QFileInfo::exists(sidecar)) {
        return true;
    }
    try {
        check.isSidecarNew = xmp.createMissingSidecar(sidecar);
        return true;
    } catch (const std::exception& error) {
        check.sidecarFailure = describe(error);
        return false;
    }
}

std::optional<QString> readCaption(const QString& path, const XMPWriter& xmp, PlainLog& log) {
    try {
        return isJpegImage(path) ? xmp.readEmbeddedCaption(path, log)
                                 : xmp.readDefaultCaption(sidecarPath(path));
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

ImageCheck checkImage(const QString& path, const SeenImage& image, const XMPWriter& xmp) {
    ImageCheck check;
    check.image = image;
    if (isJpegImage(path) || provideSidecar(sidecarPath(path), xmp, check)) {
        KeptLines log;
        check.caption = CaptionJudgement::of(readCaption(path, xmp, log));
        check.readerLines = log.lines();
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

QList<ImageCheck> checkImages(const QString& folder, const QList<SeenImage>& images, XMPWriter xmp) {
    QList<ImageCheck> checks;
    checks.reserve(images.size());
    for (const SeenImage& image : images) {
        checks.append(checkImage(folder + u'/' + image.name, image, xmp));
    }
    return checks;
}

} // namespace ostrelle
