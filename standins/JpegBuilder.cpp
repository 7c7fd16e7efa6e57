// SPDX-License-Identifier: GPL-3.0-or-later
#include "standins/JpegBuilder.h"

#include <jpeglib.h>

#include <QtEndian>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace ostrelle {

namespace {

using Colors = JpegOptions::Colors;

struct Layout {
    int channels;
    J_COLOR_SPACE input;
    J_COLOR_SPACE stored;
};

Layout layoutOf(Colors colors) {
    switch (colors) {
    case Colors::rgb:
        return {3, JCS_RGB, JCS_YCbCr};
    case Colors::gray:
        return {1, JCS_GRAYSCALE, JCS_GRAYSCALE};
    case Colors::cmyk:
    case Colors::adobeCmyk:
        return {4, JCS_CMYK, JCS_CMYK};
    case Colors::adobeYcck:
        break;
    }
    return {4, JCS_CMYK, JCS_YCCK};
}

std::vector<JSAMPLE> samples(const QImage& row, Colors colors) {
    std::vector<JSAMPLE> result;
    for (int x = 0; x < row.width(); ++x) {
        const QRgb pixel = row.pixel(x, 0);
        if (colors == Colors::gray) {
            result.push_back(static_cast<JSAMPLE>(qGray(pixel)));
        } else if (colors == Colors::rgb) {
            for (const int light : {qRed(pixel), qGreen(pixel), qBlue(pixel)}) {
                result.push_back(static_cast<JSAMPLE>(light));
            }
        } else {
            const int brightest = std::max({qRed(pixel), qGreen(pixel), qBlue(pixel), 1});
            const int flip = colors == Colors::cmyk ? 255 : 0;
            for (const int light : {qRed(pixel), qGreen(pixel), qBlue(pixel)}) {
                result.push_back(static_cast<JSAMPLE>((light * 255 / brightest) ^ flip));
            }
            result.push_back(static_cast<JSAMPLE>(brightest ^ flip));
        }
    }
    return result;
}

template <typename Integer>
void append(QByteArray& bytes, Integer value) {
    const Integer big = qToBigEndian(value);
    bytes.append(reinterpret_cast<const char*>(&big), sizeof big);
}

void appendEntry(QByteArray& bytes, std::uint16_t tag, std::uint16_t type, std::uint32_t value) {
    append(bytes, tag);
    append(bytes, type);
    append(bytes, std::uint32_t{1});
    // A short goes into the first two of its four bytes.
    append(bytes, type == 3 ? value << 16 : value);
}

/// An EXIF segment with the orientation and, in a second directory, the thumbnail.
QByteArray exifSegment(const JpegOptions& options) {
    constexpr std::uint32_t secondDirectory = 8 + 2 + 12 + 4;
    constexpr std::uint32_t thumbnailOffset = secondDirectory + 2 + 3 * 12 + 4;
    QByteArray bytes("Exif\0\0MM\0*\0\0\0\x08", 14);
    append(bytes, std::uint16_t{1});
    appendEntry(bytes, 0x0112, 3, static_cast<std::uint32_t>(std::max(options.orientation, 1)));
    append(bytes, options.exifThumbnail.isEmpty() ? 0 : secondDirectory);
    if (!options.exifThumbnail.isEmpty()) {
        append(bytes, std::uint16_t{3});
        appendEntry(bytes, 0x0103, 3, 6);
        appendEntry(bytes, 0x0201, 4, thumbnailOffset);
        appendEntry(bytes, 0x0202, 4, static_cast<std::uint32_t>(options.exifThumbnail.size()));
        append(bytes, std::uint32_t{0});
        bytes += options.exifThumbnail;
    }
    return bytes;
}

const JOCTET* octets(const QByteArray& bytes) {
    return reinterpret_cast<const JOCTET*>(bytes.constData());
}

void configure(jpeg_compress_struct& info, const JpegOptions& options) {
    const Layout layout = layoutOf(options.colors);
    info.input_components = layout.channels;
    info.in_color_space = layout.input;
    jpeg_set_defaults(&info);
    jpeg_set_colorspace(&info, layout.stored);
    jpeg_set_quality(&info, options.quality, TRUE);
    if (options.colors == Colors::cmyk) {
        info.write_Adobe_marker = FALSE;
    }
    info.restart_in_rows = options.restartRows;
    if (options.progressive) {
        jpeg_simple_progression(&info);
    }
}

} // namespace

QByteArray jpegFile(const QImage& picture, const JpegOptions& options) {
    jpeg_error_mgr errors; // by default it ends the program: builders get only what can be built
    jpeg_compress_struct info{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* buffer = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &buffer, &size);
    info.image_width = static_cast<JDIMENSION>(picture.width());
    info.image_height = static_cast<JDIMENSION>(picture.height());
    configure(info, options);
    jpeg_start_compress(&info, TRUE);
    if (options.orientation > 0 || !options.exifThumbnail.isEmpty()) {
        const QByteArray exif = exifSegment(options);
        jpeg_write_marker(&info, JPEG_APP0 + 1, octets(exif), static_cast<unsigned>(exif.size()));
    }
    if (!options.profile.isEmpty()) {
        jpeg_write_icc_profile(&info, octets(options.profile), static_cast<unsigned>(options.profile.size()));
    }
    for (int y = 0; y < picture.height(); ++y) {
        std::vector<JSAMPLE> line = samples(picture.copy(0, y, picture.width(), 1), options.colors);
        JSAMPROW row = line.data();
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    const QByteArray result(reinterpret_cast<const char*>(buffer), static_cast<qsizetype>(size));
    jpeg_destroy_compress(&info);
    std::free(buffer);
    return result;
}

QByteArray jpegWithXmp(const QByteArray& jpeg, const QByteArray& packet) {
    const QByteArray payload = QByteArray("http://ns.adobe.com/xap/1.0/\0", 29) + packet;
    const auto length = static_cast<quint16>(payload.size() + 2); // the length counts itself
    QByteArray segment("\xFF\xE1");
    segment.append(static_cast<char>(length >> 8));
    segment.append(static_cast<char>(length & 0xFF));
    return jpeg.first(2) + segment + payload + jpeg.sliced(2);
}

} // namespace ostrelle
