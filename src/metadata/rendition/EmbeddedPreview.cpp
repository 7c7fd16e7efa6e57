// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/rendition/EmbeddedPreview.h"

#include "metadata/rendition/ExtractError.h"

#include <algorithm>
#include <functional>
#include <optional>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Cameras store two or three; without a limit, a hostile file could have many decoded for nothing.
constexpr std::size_t maximumAttempts = 3;

[[noreturn]] void refuse(const QString& reason) {
    throw ExtractError(ExtractError::Case::cannotCreateThumbnail, reason);
}

std::optional<PixelSize> sizeOf(const QString& path, ByteRange range) {
    try {
        return jpegSize(path, range);
    } catch (const ExtractError&) {
        return std::nullopt; // raw data, or a lossless JPEG of it
    }
}

} // namespace

std::vector<EmbeddedPreview> findPreviews(const QString& path, const RawContents& contents) {
    std::vector<EmbeddedPreview> previews;
    for (const ByteRange& range : contents.jpegs) {
        if (const std::optional<PixelSize> size = sizeOf(path, range)) {
            previews.push_back({range, *size});
        }
    }
    std::ranges::sort(previews, std::greater(),
                      [](const EmbeddedPreview& preview) { return longerSide(preview.size); });
    return previews;
}

PreviewPicture decodePreview(const QString& path, const std::vector<EmbeddedPreview>& previews, int limit) {
    if (previews.empty()) {
        refuse(u"the file holds no preview to show instead"_s);
    }
    if (!previews.front().isLarge()) {
        const auto [width, height] = previews.front().size;
        refuse(u"the preview in the file is too small to show instead (%1 x %2 pixels)"_s.arg(width).arg(
            height));
    }
    QString reason;
    for (std::size_t i = 0; i < std::min(previews.size(), maximumAttempts) && previews[i].isLarge(); ++i) {
        try {
            return {decodeJpeg(path, previews[i].range, limit), previews[i].size};
        } catch (const ExtractError& error) {
            reason = reason.isEmpty() ? error.reason() : reason;
        }
    }
    refuse(u"the preview in the file cannot be shown instead: %1"_s.arg(reason));
}

} // namespace ostrelle
