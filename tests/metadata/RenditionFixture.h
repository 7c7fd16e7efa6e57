// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/rendition/ExtractError.h"
#include "metadata/rendition/RAWPreviewExtractor.h"
#include "standins/DngBuilder.h"
#include "standins/JpegBuilder.h"
#include "standins/SportsScene.h"
#include "support/FileFacts.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <cstdlib>
#include <optional>
#include <type_traits>

namespace ostrelle {

/// Small, so that small scenes are large enough.
inline constexpr int limit = 256;

inline Rendition rendition(const QString& path, Orientation orientation = Orientation::asStored) {
    return RAWPreviewExtractor().extractPreview(path, limit, 0.95, orientation);
}

inline QByteArray render(const QString& path, double maxPixelSize = limit, double quality = 0.6) {
    return RAWPreviewExtractor().extractPreview(path, maxPixelSize, quality).jpeg;
}

/// The case that the extraction fails with, or none.
inline std::optional<ExtractError::Case> failure(const QString& path, double maxPixelSize = limit) {
    try {
        render(path, maxPixelSize);
    } catch (const ExtractError& error) {
        return error.kind();
    }
    return std::nullopt;
}

/// The options with one of them set.
template <typename Options, typename Value>
Options with(Value Options::* option, std::type_identity_t<Value> value, Options options = {}) {
    options.*option = std::move(value);
    return options;
}

class Renditions : public testing::Test {
protected:
    QString file(const QByteArray& bytes, const QString& name = QStringLiteral("picture")) const {
        const QString path = m_folder.filePath(name);
        QFile::remove(path); // overwriting an old file would flush it to disk on close
        writeFile(path, bytes);
        return path;
    }
    QImage picture(const QByteArray& bytes, double maxPixelSize = limit, double quality = 0.95) const {
        const QImage image = QImage::fromData(render(file(bytes), maxPixelSize, quality), "JPEG");
        EXPECT_FALSE(image.isNull());
        return image;
    }
    QString path(const QString& name) const { return m_folder.filePath(name); }

private:
    QTemporaryDir m_folder;
};

/// The mean difference between the samples of two pictures, out of 255.
inline double difference(const QImage& one, const QImage& other) {
    EXPECT_EQ(one.size(), other.size());
    if (one.size() != other.size()) {
        return 255;
    }
    const QImage left = one.convertToFormat(QImage::Format_RGB888);
    const QImage right = other.convertToFormat(QImage::Format_RGB888);
    double sum = 0;
    for (int y = 0; y < left.height(); ++y) {
        for (int x = 0; x < 3 * left.width(); ++x) {
            sum += std::abs(left.constScanLine(y)[x] - right.constScanLine(y)[x]);
        }
    }
    return sum / 3 / left.width() / left.height();
}

inline QImage flat(QColor color, QSize size = {64, 48}) {
    QImage image(size, QImage::Format_RGB888);
    image.fill(color);
    return image;
}

} // namespace ostrelle
