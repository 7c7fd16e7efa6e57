// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/rendition/CutShort.h"

#include "metadata/rendition/FileBytes.h"
#include "metadata/rendition/RawContents.h"

#include <QtEndian>
#include <algorithm>

namespace ostrelle {

namespace {

constexpr char markerByte = '\xFF';
constexpr quint8 endOfImage = 0xD9;

/// Markers that stand alone, and bytes of the compressed picture that only look like one (ISO 10918-1, B.1).
bool isWithoutLength(quint8 marker) {
    constexpr quint8 stuffing = 0x00;
    constexpr quint8 temporary = 0x01;
    constexpr quint8 firstRestart = 0xD0;
    constexpr quint8 startOfImage = 0xD8;
    return marker == stuffing || marker == temporary || (marker >= firstRestart && marker <= startOfImage);
}

/// Where the next marker begins, from the offset on; the file's size if there is none.
qint64 nextMarker(FileBytes& file, qint64 offset) {
    constexpr qint64 mostAtOnce = 1 << 20;
    qint64 readAtOnce = 4096; // the next one is often near
    while (offset + 1 < file.size()) {
        const QByteArray bytes = file.read(offset, std::min(readAtOnce, file.size() - offset));
        qsizetype at = bytes.indexOf(markerByte);
        while (at >= 0 && at + 1 < bytes.size()) {
            const auto marker = static_cast<quint8>(bytes[at + 1]);
            if (bytes[at + 1] != markerByte && !isWithoutLength(marker)) {
                return offset + at;
            }
            at = bytes.indexOf(markerByte, bytes[at + 1] == markerByte ? at + 1 : at + 2);
        }
        if (bytes.isEmpty()) { // it has shrunk meanwhile
            break;
        }
        // The last byte may begin a marker.
        offset += std::max<qsizetype>(bytes.size() - 1, 1);
        readAtOnce = mostAtOnce;
    }
    return file.size();
}

bool isJpegCutShort(FileBytes& file) {
    constexpr int mostMarkers = 16'384; // more are no picture of a camera
    qint64 offset = nextMarker(file, 0);
    for (int markers = 0; offset < file.size(); ++markers) {
        if (markers == mostMarkers) {
            return false;
        }
        const QByteArray header = file.read(offset, 2);
        if (header.size() == 2 && static_cast<quint8>(header[1]) == endOfImage) {
            return false;
        }
        const QByteArray length = file.read(offset + 2, 2);
        const qint64 end = offset + 2 + (length.isEmpty() ? 0 : qFromBigEndian<quint16>(length.constData()));
        // A damaged picture may hold what looks like a marker.
        offset = nextMarker(file, end < file.size() ? end : offset + 2);
    }
    return true;
}

} // namespace

bool isCutShort(const QString& path) {
    FileBytes file(path);
    if (file.read(0, 2) == "\xFF\xD8") {
        return isJpegCutShort(file);
    }
    const std::optional<RawContents> contents = readRawContents(file);
    return contents && contents->end > file.size();
}

} // namespace ostrelle
