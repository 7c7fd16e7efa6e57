// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/bytes/ByteSplice.h"

#include <QByteArrayView>
#include <optional>
#include <vector>

namespace ostrelle {

/// One marker segment with a length, in front of the compressed picture.
struct JpegSegment {
    enum class Kind { exif, xmpPacket, xmpExtension, photoshop, multiPicture, other };

    quint8 marker = 0;
    Kind kind = Kind::other;
    ByteRange range;   ///< from the marker to the end of the payload
    ByteRange payload; ///< behind the length

    bool is(Kind wanted) const { return kind == wanted; }
};

/// Where the marker segments of a JPEG file lie. Bytes between them and doubled markers belong to no segment.
struct JpegSegments {
    static constexpr quint8 app0 = 0xE0;
    static constexpr quint8 app1 = 0xE1;
    static constexpr quint8 app11 = 0xEB;
    static constexpr quint8 app13 = 0xED;
    static constexpr qsizetype maximumPayload = 0xFFFF - 2;

    std::vector<JpegSegment> segments;
    qsizetype pictureBegin = 0; ///< the marker of the first scan, or the place that could not be read on from
    bool reachesPicture = false;
    bool isCut = false; ///< the bytes end within a segment

    /// Walks as the decoder does, over at most 16,384 segments. Nothing when the bytes are no JPEG.
    static std::optional<JpegSegments> walk(QByteArrayView bytes);

    std::vector<JpegSegment> all(JpegSegment::Kind kind) const;
};

/// What the payload of a segment of this kind begins with; empty for other segments.
QByteArrayView jpegSignature(JpegSegment::Kind kind);

/// The payload behind the signature. `file` is what the segment was found in.
QByteArrayView contentOf(const JpegSegment& segment, QByteArrayView file);

/// A whole segment. The payload is at most JpegSegments::maximumPayload bytes.
QByteArray jpegSegment(quint8 marker, QByteArrayView payload);

} // namespace ostrelle
