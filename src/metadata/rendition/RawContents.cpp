// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/rendition/RawContents.h"

#include "metadata/bytes/JpegSegments.h"
#include "metadata/rendition/Cr3Contents.h"
#include "metadata/rendition/TiffContents.h"

#include <QtEndian>
#include <algorithm>

namespace ostrelle {

namespace {

/// The turn requested by the first EXIF segment of a JPEG.
std::optional<PictureTurn> turnOfJpeg(FileBytes& file, ByteRange jpeg) {
    constexpr qsizetype firstSegments = 128 << 10;
    const QByteArray bytes = file.read(jpeg.begin, std::min(jpeg.size(), firstSegments));
    const std::optional<JpegSegments> segments = JpegSegments::walk(bytes);
    const std::vector<JpegSegment> exif =
        segments ? segments->all(JpegSegment::Kind::exif) : std::vector<JpegSegment>();
    return exif.empty() ? std::nullopt : turnOfExif(contentOf(exif.front(), bytes));
}

/// Fuji's file starts with a table of offsets. Only the JPEG holds the orientation.
std::optional<RawContents> readRafContents(FileBytes& file) {
    constexpr qint64 jpegOffsetField = 84;
    const QByteArray header = file.read(0, jpegOffsetField + 8);
    if (!header.startsWith("FUJIFILMCCD-RAW ")) {
        return std::nullopt;
    }
    RawContents contents;
    contents.addJpeg(file, qFromBigEndian<quint32>(header.constData() + jpegOffsetField),
                     qFromBigEndian<quint32>(header.constData() + jpegOffsetField + 4));
    constexpr qint64 tablesField = jpegOffsetField + 8; // the offsets and lengths of metadata and raw data
    const QByteArray tables = file.read(tablesField, 16);
    for (qsizetype at = 0; at + 8 <= tables.size(); at += 8) {
        contents.addRange(qFromBigEndian<quint32>(tables.constData() + at),
                          qFromBigEndian<quint32>(tables.constData() + at + 4));
    }
    if (!contents.jpegs.empty()) {
        contents.turn = turnOfJpeg(file, contents.jpegs.front());
    }
    return contents;
}

} // namespace

void RawContents::addRange(qint64 begin, qint64 length) {
    constexpr qint64 largest = qint64{1} << 40; // of both, so that a hostile file overflows nothing
    if (begin > 0 && length > 0 && begin < largest && length < largest) {
        end = std::max(end, begin + length);
    }
}

void RawContents::addJpeg(const FileBytes& file, qint64 begin, qint64 length) {
    addRange(begin, length);
    if (begin <= 0 || begin >= file.size() || length <= 0 || jpegs.size() >= maximumJpegs) {
        return;
    }
    jpegs.push_back({begin, begin + std::min(length, file.size() - begin)});
}

std::optional<RawContents> readRawContents(FileBytes& file) {
    if (std::optional<RawContents> contents = readRafContents(file)) {
        return contents;
    }
    if (std::optional<RawContents> contents = readCr3Contents(file)) {
        return contents;
    }
    return readTiffContents(file, 0);
}

} // namespace ostrelle
