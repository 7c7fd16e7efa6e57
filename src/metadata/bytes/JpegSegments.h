// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/bytes/ByteSplice.h"

#include <QByteArrayView>
#include <optional>
#include <vector>

namespace ostrelle {

/// A marker segment with a length, before the compressed picture.
struct JpegSegment {
    enum class Kind { exif, xmpPacket, xmpExtension, photoshop, multiPicture, other };

    quint8 marker = 0;
    Kind kind = Kind::other;
    ByteRange range;   ///< from the marker to the end of the payload
    ByteRange payload; ///< after the length

    bool is(Kind wanted) const { return kind == wanted; }
};

/// The positions of a JPEG file's marker segments. Bytes between them and doubled markers belong to none.
struct JpegSegments {
    static constexpr quint8 app0 = 0xE0;
    static constexpr quint8 app1 = 0xE1;
    static constexpr quint8 app11 = 0xEB;
    static constexpr quint8 app13 = 0xED;
    static constexpr qsizetype maximumPayload = 0xFFFF - 2;

    std::vector<JpegSegment> segments;
    qsizetype pictureBegin = 0; ///< the marker of the first scan, or where reading could not go on
    bool reachesPicture = false;
    bool isCut = false; ///< the bytes end inside a segment

    /// Walks the file as the decoder does, over at most 16,384 segments. Nothing when the bytes are not a
    /// JPEG.
    static std::optional<JpegSegments> walk(QByteArrayView bytes);

    std::vector<JpegSegment> all(JpegSegment::Kind kind) const;
};

/// The first bytes of the payload of such a segment; empty for other kinds.
QByteArrayView jpegSignature(JpegSegment::Kind kind);

/// The payload after the signature. `file` is the file that the segment was found in.
QByteArrayView contentOf(const JpegSegment& segment, QByteArrayView file);

/// A whole segment. The payload is at most JpegSegments::maximumPayload bytes.
QByteArray jpegSegment(quint8 marker, QByteArrayView payload);

} // namespace ostrelle
