// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/RAWPreviewExtractor.h"

#include "metadata/ColorConversion.h"
#include "metadata/ExtractError.h"
#include "metadata/JpegDecoder.h"
#include "metadata/JpegEncoder.h"
#include "metadata/RawDecoder.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <new>

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

bool isJpeg(const QString& path) {
    // Opening a pipe would wait for its writer.
    if (!QFileInfo(path).isFile()) {
        throw ExtractError(ExtractError::Case::cannotOpen, u"there is no such file"_s);
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        throw ExtractError(ExtractError::Case::cannotOpen, file.errorString());
    }
    if (file.size() == 0) {
        throw ExtractError(ExtractError::Case::cannotOpen, u"the file is empty"_s);
    }
    return file.read(2) == "\xFF\xD8";
}

Raster<std::uint8_t> decode(const QString& path, int limit) {
    if (!isJpeg(path)) {
        return decodeRaw(path, limit);
    }
    JpegPicture picture = decodeJpeg(path, limit);
    return convertToSrgb(std::move(picture.pixels), picture.model, picture.profile);
}

} // namespace

QByteArray RAWPreviewExtractor::extractPreview(const QString& path, double maxPixelSize,
                                               double quality) const {
    const int limit = pixelLimit(maxPixelSize);
    try {
        return encodeJpeg(decode(path, limit),
                          static_cast<int>(std::lround(100 * std::clamp(quality, 0.0, 1.0))));
    } catch (const std::bad_alloc&) {
        throw ExtractError(ExtractError::Case::cannotCreateThumbnail, u"there is not enough memory"_s);
    }
}

} // namespace ostrelle
