// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/bytes/ByteSplice.h"

#include <QByteArrayView>
#include <optional>
#include <vector>

namespace ostrelle {

/// One entry of a TIFF directory.
struct TiffEntry {
    static constexpr qsizetype size = 12;

    quint16 tag = 0;
    quint16 type = 0;
    quint32 count = 0;
    qsizetype at = 0; ///< of the entry itself, in the block

    bool isOfKnownType() const;
    /// The size of its value in bytes; 0 for an unknown type.
    qint64 valueSize() const;
};

/// One directory of a TIFF block.
struct TiffDirectory {
    qsizetype at = 0;
    std::vector<TiffEntry> entries;
    quint32 next = 0; ///< the offset of the next directory; 0 when there is none

    std::optional<TiffEntry> find(quint16 tag) const;
};

/// A view of a block of TIFF directories, as in EXIF and multi-picture files. Offsets count from the block's
/// own header. The bytes are untrusted, so all access is checked. They must outlive the view.
class TiffBlock {
public:
    static constexpr qsizetype firstDirectoryField = 4;
    static constexpr qsizetype headerSize = 8;

    /// Nothing when the block does not start with a TIFF header.
    static std::optional<TiffBlock> open(QByteArrayView bytes);

    QByteArrayView bytes() const { return m_bytes; }
    bool isBigEndian() const { return m_isBigEndian; }

    /// A number at an offset; 0 outside the block.
    quint16 shortAt(qsizetype offset) const;
    quint32 longAt(qsizetype offset) const;

    /// Nothing unless the whole directory lies in the block.
    std::optional<TiffDirectory> directory(quint32 offset) const;
    std::optional<TiffDirectory> firstDirectory() const { return directory(longAt(firstDirectoryField)); }
    /// The directory that an entry of the given one points to.
    std::optional<TiffDirectory> directoryBelow(const TiffDirectory& directory, quint16 tag) const;

    /// The position of the value, in the entry or elsewhere, even beyond the end of the block.
    ByteRange valueRange(const TiffEntry& entry) const;
    /// The value; nothing when its type is unknown or part of it lies outside the block.
    std::optional<QByteArrayView> value(const TiffEntry& entry) const;

private:
    TiffBlock(QByteArrayView bytes, bool isBigEndian) : m_bytes(bytes), m_isBigEndian(isBigEndian) {}

    QByteArrayView m_bytes;
    bool m_isBigEndian;
};

/// Numbers in a block's byte order.
QByteArray tiffShort(quint16 value, bool isBigEndian);
QByteArray tiffLong(quint32 value, bool isBigEndian);

namespace tiff {

// Types
inline constexpr quint16 byteType = 1;
inline constexpr quint16 asciiType = 2;
inline constexpr quint16 longType = 4;
inline constexpr quint16 undefinedType = 7;
inline constexpr quint16 utf8Type = 129; // EXIF 3.0

// Tags
inline constexpr quint16 imageDescription = 0x010E;
inline constexpr quint16 stripOffsets = 0x0111;
inline constexpr quint16 stripByteCounts = 0x0117;
inline constexpr quint16 dateTime = 0x0132;
inline constexpr quint16 artist = 0x013B;
inline constexpr quint16 thumbnailOffset = 0x0201;
inline constexpr quint16 thumbnailLength = 0x0202;
inline constexpr quint16 copyright = 0x8298;
inline constexpr quint16 exifDirectory = 0x8769;
inline constexpr quint16 gpsDirectory = 0x8825;
inline constexpr quint16 dateTimeOriginal = 0x9003;
inline constexpr quint16 userComment = 0x9286;
inline constexpr quint16 interoperabilityDirectory = 0xA005;
inline constexpr quint16 multiPictureEntries = 0xB002;

} // namespace tiff

} // namespace ostrelle
