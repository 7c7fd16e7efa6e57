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
        if (caption.isEmpty()) {
            count.without.append(file);
        } else {
            ++count.captioned;
        }
        count.lasting += isRealCaption(caption) ? 1 : 0;
    }
    return count;
}

} // namespace ostrelle
