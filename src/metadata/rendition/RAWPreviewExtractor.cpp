// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/rendition/RAWPreviewExtractor.h"

#include "metadata/rendition/ColorConversion.h"
#include "metadata/rendition/EmbeddedPreview.h"
#include "metadata/rendition/ExtractError.h"
#include "metadata/rendition/JpegDecoder.h"
#include "metadata/rendition/JpegEncoder.h"
#include "metadata/rendition/RawContents.h"
#include "metadata/rendition/RawDecoder.h"
#include "metadata/rendition/VectorRegisters.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <optional>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

int pixelLimit(double maxPixelSize) {
    constexpr double integerRange = 9223372036854775808.0;
    if (!std::isfinite(maxPixelSize) || maxPixelSize < -integerRange || maxPixelSize >= integerRange) {
        qFatal("The maximum pixel size of a rendition must be a number in the range of integers.");
    }
    if (maxPixelSize < 1) {
        throw ExtractError(ExtractError::Case::cannotCreateThumbnail, u"no pixels are allowed"_s);
    }
    return static_cast<int>(std::min(maxPixelSize, double{maximumSide}));
}

/// A scaled picture in sRGB, unrotated.
struct Decoded {
    Raster<std::uint8_t> pixels;
    PictureTurn turn;
    Rendition facts = {}; ///< all but the JPEG
};

Decoded decoded(JpegPicture picture, PictureTurn otherwise) {
    const PictureTurn turn = picture.turn.value_or(otherwise);
    return {convertToSrgb(std::move(picture.pixels), picture.model, picture.profile), turn};
}

/// A preview's own EXIF gives its orientation; without any, it has that of the raw picture.
Decoded decodePreviewOf(const QString& path, const std::vector<EmbeddedPreview>& previews, PictureTurn turn,
                        int limit, const ExtractError& failure) {
    try {
        PreviewPicture preview = decodePreview(path, previews, limit);
        Decoded result = decoded(std::move(preview.picture), turn);
        result.facts = {{}, Rendition::Source::embeddedPreview, preview.size, failure.reason()};
        return result;
    } catch (const ExtractError& error) {
        throw ExtractError(failure.kind(), failure.reason() + u", and "_s + error.reason());
    }
}

Decoded decodeRawFile(const QString& path, int limit) {
    FileBytes file(path);
    const std::optional<RawContents> contents = readRawContents(file);
    const auto previews = contents ? findPreviews(path, *contents) : std::vector<EmbeddedPreview>();
    const bool hasPreview = !previews.empty() && previews.front().isLarge();
    try {
        RawPicture picture = decodeRaw(path, limit, hasPreview ? RawColors::known : RawColors::any);
        return {std::move(picture.pixels), contents ? contents->turn.value_or(picture.turn) : picture.turn};
    } catch (const ExtractError& error) {
        if (!contents) {
            throw error.kind() == ExtractError::Case::cannotOpen
                ? ExtractError(error.kind(), u"it is neither a JPEG nor a known RAW file"_s)
                : error;
        }
        return decodePreviewOf(path, previews, contents->turn.value_or(PictureTurn()), limit, error);
    }
}

Decoded decode(ImageFile& file, int limit) {
    std::optional<JpegPicture> jpeg = decodeIfJpeg(file, limit);
    return jpeg ? decoded(std::move(*jpeg), {}) : decodeRawFile(file.path(), limit);
}

} // namespace

Rendition RAWPreviewExtractor::extractPreview(const QString& path, double maxPixelSize, double quality,
                                              Orientation orientation) const {
    ImageFile file(path);
    return extractPreview(file, maxPixelSize, quality, orientation);
}

Rendition RAWPreviewExtractor::extractPreview(ImageFile& file, double maxPixelSize, double quality,
                                              Orientation orientation) const {
    const int limit = pixelLimit(maxPixelSize);
    clearUpperVectorHalves(); // metadata may have been read on this thread
    try {
        Decoded picture = decode(file, limit);
        if (orientation == Orientation::upright) {
            picture.pixels = turned(std::move(picture.pixels), picture.turn);
        }
        Rendition rendition = std::move(picture.facts);
        rendition.jpeg =
            encodeJpeg(picture.pixels, static_cast<int>(std::lround(100 * std::clamp(quality, 0.0, 1.0))));
        return rendition;
    } catch (const std::bad_alloc&) {
        throw ExtractError(ExtractError::Case::cannotCreateThumbnail, u"there is not enough memory"_s);
    }
}

} // namespace ostrelle
