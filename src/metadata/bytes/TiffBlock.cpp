// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/bytes/TiffBlock.h"

#include <QtEndian>
#include <algorithm>
#include <array>

namespace ostrelle {

namespace {

qint64 unitSizeOf(quint16 type) {
    static constexpr std::array<quint8, 14> sizes = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};
    return type < sizes.size() ? sizes[type] : (type == tiff::utf8Type ? 1 : 0);
}

template <typename Integer>
QByteArray inOrder(Integer value, bool isBigEndian) {
    QByteArray bytes(sizeof value, Qt::Uninitialized);
    if (isBigEndian) {
        qToBigEndian(value, bytes.data());
    } else {
        qToLittleEndian(value, bytes.data());
    }
    return bytes;
}

} // namespace

bool TiffEntry::isOfKnownType() const {
    return unitSizeOf(type) > 0;
}

qint64 TiffEntry::valueSize() const {
    return unitSizeOf(type) * count;
}

std::optional<TiffEntry> TiffDirectory::find(quint16 tag) const {
    const auto found = std::ranges::find(entries, tag, &TiffEntry::tag);
    return found == entries.end() ? std::nullopt : std::optional(*found);
}

std::optional<TiffBlock> TiffBlock::open(QByteArrayView bytes) {
    const bool isBigEndian = bytes.startsWith(QByteArrayView("MM\0*", 4));
    if (bytes.size() < headerSize || (!isBigEndian && !bytes.startsWith(QByteArrayView("II*\0", 4)))) {
        return std::nullopt;
    }
    return TiffBlock(bytes, isBigEndian);
}

quint16 TiffBlock::shortAt(qsizetype offset) const {
    if (offset < 0 || offset > m_bytes.size() - 2) {
        return 0;
    }
    const char* place = m_bytes.data() + offset;
    return m_isBigEndian ? qFromBigEndian<quint16>(place) : qFromLittleEndian<quint16>(place);
}

quint32 TiffBlock::longAt(qsizetype offset) const {
    if (offset < 0 || offset > m_bytes.size() - 4) {
        return 0;
    }
    const char* place = m_bytes.data() + offset;
    return m_isBigEndian ? qFromBigEndian<quint32>(place) : qFromLittleEndian<quint32>(place);
}

std::optional<TiffDirectory> TiffBlock::directory(quint32 offset) const {
    const qsizetype entriesBegin = qsizetype{offset} + 2;
    if (offset < headerSize || entriesBegin > m_bytes.size()) {
        return std::nullopt;
    }
    const quint16 count = shortAt(offset);
    const qsizetype entriesEnd = entriesBegin + count * TiffEntry::size;
    if (entriesEnd > m_bytes.size()) {
        return std::nullopt;
    }
    TiffDirectory result{.at = offset, .entries = {}, .next = longAt(entriesEnd)};
    result.entries.reserve(count);
    for (qsizetype at = entriesBegin; at < entriesEnd; at += TiffEntry::size) {
        result.entries.push_back({shortAt(at), shortAt(at + 2), longAt(at + 4), at});
    }
    return result;
}

std::optional<TiffDirectory> TiffBlock::directoryBelow(const TiffDirectory& directory, quint16 tag) const {
    const std::optional<TiffEntry> entry = directory.find(tag);
    return entry ? this->directory(longAt(entry->at + 8)) : std::nullopt;
}

ByteRange TiffBlock::valueRange(const TiffEntry& entry) const {
    const qint64 size = entry.valueSize();
    const qsizetype begin = size > 4 ? qsizetype{longAt(entry.at + 8)} : entry.at + 8;
    return {begin, begin + size};
}

std::optional<QByteArrayView> TiffBlock::value(const TiffEntry& entry) const {
    const ByteRange range = valueRange(entry);
    return entry.isOfKnownType() && range.end <= m_bytes.size() ? std::optional(range.of(m_bytes))
                                                                : std::nullopt;
}

QByteArray tiffShort(quint16 value, bool isBigEndian) {
    return inOrder(value, isBigEndian);
}

QByteArray tiffLong(quint32 value, bool isBigEndian) {
    return inOrder(value, isBigEndian);
}

} // namespace ostrelle
