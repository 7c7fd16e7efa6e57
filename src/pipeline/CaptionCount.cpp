// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/CaptionCount.h"

#include "core/Attempt.h"
#include "metadata/ImageMetadata.h"
#include "pipeline/CaptionAcceptance.h"

namespace ostrelle {

namespace {

/// Trimmed; empty without one.
QString captionOf(const QString& file, const QTimeZone& zone) {
    auto read = [&] { return ImageMetadata(file).read(zone).facts.caption.value_or(QString()).trimmed(); };
    return attemptNow(read).valueOr(QString());
}

} // namespace

CaptionCount countCaptions(const QStringList& files, const QTimeZone& zone) {
    CaptionCount count{.images = files.size()};
    for (const QString& file : files) {
        const QString caption = captionOf(file, zone);
        count.captioned += caption.isEmpty() ? 0 : 1;
        count.lasting += isRealCaption(caption) ? 1 : 0;
    }
    return count;
}

QStringList withoutCaption(const QStringList& files, const QTimeZone& zone) {
    QStringList without;
    for (const QString& file : files) {
        if (captionOf(file, zone).isEmpty()) {
            without.append(file);
        }
    }
    return without;
}

} // namespace ostrelle
