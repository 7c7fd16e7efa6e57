// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QtEndian>
#include <cstdint>
#include <vector>

namespace ostrelle {

/// A number in the given byte order.
template <typename Integer>
QByteArray tiffNumber(Integer value, bool isBigEndian) {
    const Integer ordered = isBigEndian ? qToBigEndian(value) : qToLittleEndian(value);
    return {reinterpret_cast<const char*>(&ordered), sizeof ordered};
}

/// One directory of a TIFF file under construction.
class TiffDirectoryBuilder {
public:
    explicit TiffDirectoryBuilder(bool isBigEndian = false) : m_isBigEndian(isBigEndian) {}

    void addShorts(std::uint16_t tag, const std::vector<std::uint16_t>& values) { addAll(tag, 3, values); }
    void addLongs(std::uint16_t tag, const std::vector<std::uint32_t>& values) { addAll(tag, 4, values); }
    void addLong(std::uint16_t tag, qsizetype value) { addLongs(tag, {static_cast<std::uint32_t>(value)}); }
    void addBytes(std::uint16_t tag, const QByteArray& bytes) { add(tag, 1, bytes.size(), bytes); }
    void addText(std::uint16_t tag, const QByteArray& text) { add(tag, 2, text.size() + 1, text + '\0'); }
    /// Fractions of 10,000; `signedType` as DNG requires for matrices.
    void addRationals(std::uint16_t tag, const std::vector<float>& values, bool signedType);
    /// A value whose bytes are already in the file's order.
    void add(std::uint16_t tag, std::uint16_t type, qsizetype count, const QByteArray& value) {
        m_entries.push_back({tag, type, static_cast<std::uint32_t>(count), value});
    }
    /// An undefined value whose bytes are elsewhere in the file.
    void addElsewhere(std::uint16_t tag, qsizetype offset, qsizetype length) {
        add(tag, 7, length, number(static_cast<std::uint32_t>(offset)));
    }

    /// Size in bytes of the directory with the values that do not fit into it.
    qsizetype size() const { return written(0, 0).size(); }
    /// The directory as written at `offset` in the file; `next` is the offset of the following one, or 0.
    QByteArray written(qsizetype offset, qsizetype next) const;

private:
    struct Entry {
        std::uint16_t tag;
        std::uint16_t type;
        std::uint32_t count;
        QByteArray value;
    };

    template <typename Integer>
    void addAll(std::uint16_t tag, std::uint16_t type, const std::vector<Integer>& values) {
        QByteArray bytes;
        for (const Integer value : values) {
            bytes += number(value);
        }
        add(tag, type, std::ssize(values), bytes);
    }
    template <typename Integer>
    QByteArray number(Integer value) const {
        return tiffNumber(value, m_isBigEndian);
    }

    bool m_isBigEndian;
    std::vector<Entry> m_entries;
};

} // namespace ostrelle
