// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/bytes/JpegSegments.h"

#include <QtEndian>
#include <algorithm>
#include <array>

namespace ostrelle {

namespace {

using Kind = JpegSegment::Kind;

constexpr std::size_t maximumSegments = 16'384;
constexpr quint8 startOfImage = 0xD8;
constexpr quint8 endOfImage = 0xD9;
constexpr quint8 startOfScan = 0xDA;

struct Signature {
    Kind kind;
    quint8 marker;
    QByteArrayView bytes;
};

constexpr std::array signatures = {
    Signature{Kind::exif, JpegSegments::app1, QByteArrayView("Exif\0\0", 6)},
    Signature{Kind::xmpPacket, JpegSegments::app1, QByteArrayView("http://ns.adobe.com/xap/1.0/\0", 29)},
    Signature{Kind::xmpExtension, JpegSegments::app1,
              QByteArrayView("http://ns.adobe.com/xmp/extension/\0", 35)},
    Signature{Kind::multiPicture, 0xE2, QByteArrayView("MPF\0", 4)},
    Signature{Kind::photoshop, JpegSegments::app13, QByteArrayView("Photoshop 3.0\0", 14)},
};

Kind kindOf(quint8 marker, QByteArrayView payload) {
    const auto found = std::ranges::find_if(signatures, [&](const Signature& signature) {
        return signature.marker == marker && payload.startsWith(signature.bytes);
    });
    return found == signatures.end() ? Kind::other : found->kind;
}

/// TEM and the restart markers have no length; the decoder skips them.
bool hasNoLength(quint8 marker) {
    return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7);
}

/// The position of the next marker code after any stray and fill bytes, or -1.
qsizetype nextCode(QByteArrayView bytes, qsizetype at) {
    for (at = bytes.indexOf('\xFF', at); at >= 0; at = bytes.indexOf('\xFF', at)) {
        while (at < bytes.size() && bytes[at] == '\xFF') {
            ++at;
        }
        if (at < bytes.size() && bytes[at] != '\0') {
            return at;
        }
    }
    return -1;
}

} // namespace

std::optional<JpegSegments> JpegSegments::walk(QByteArrayView bytes) {
    if (bytes.size() < 2 || static_cast<quint8>(bytes[0]) != 0xFF ||
        static_cast<quint8>(bytes[1]) != startOfImage) {
        return std::nullopt;
    }
    JpegSegments result;
    result.pictureBegin = 2;
    while (result.segments.size() < maximumSegments) {
        const qsizetype code = nextCode(bytes, result.pictureBegin);
        result.isCut = code < 0;
        const quint8 marker = code < 0 ? quint8{0} : static_cast<quint8>(bytes[code]);
        if (code < 0 || marker == startOfImage || marker == endOfImage) {
            break;
        }
        if (marker == startOfScan) {
            result.pictureBegin = code - 1;
            result.reachesPicture = true;
            break;
        }
        if (hasNoLength(marker)) {
            result.pictureBegin = code + 1;
            continue;
        }
        if (bytes.size() - code < 3) {
            result.isCut = true;
            break;
        }
        const qsizetype length = qFromBigEndian<quint16>(bytes.data() + code + 1);
        result.isCut = length > bytes.size() - code - 1;
        if (length < 2 || result.isCut) {
            break;
        }
        const ByteRange payload{code + 3, code + 1 + length};
        result.segments.push_back(
            {marker, kindOf(marker, payload.of(bytes)), {code - 1, payload.end}, payload});
        result.pictureBegin = payload.end;
    }
    return result;
}

std::vector<JpegSegment> JpegSegments::all(Kind kind) const {
    std::vector<JpegSegment> found;
    std::ranges::copy_if(segments, std::back_inserter(found),
                         [kind](const JpegSegment& segment) { return segment.is(kind); });
    return found;
}

QByteArrayView jpegSignature(Kind kind) {
    const auto found = std::ranges::find(signatures, kind, &Signature::kind);
    return found == signatures.end() ? QByteArrayView() : found->bytes;
}

QByteArrayView contentOf(const JpegSegment& segment, QByteArrayView file) {
    return segment.payload.of(file).sliced(jpegSignature(segment.kind).size());
}

QByteArray jpegSegment(quint8 marker, QByteArrayView payload) {
    Q_ASSERT(payload.size() <= JpegSegments::maximumPayload);
    QByteArray bytes(4, Qt::Uninitialized);
    bytes[0] = '\xFF';
    bytes[1] = static_cast<char>(marker);
    qToBigEndian(static_cast<quint16>(payload.size() + 2), bytes.data() + 2);
    return bytes += payload;
}

} // namespace ostrelle
