// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <cstdint>
#include <vector>

namespace ostrelle {

/// A number of 16 or 32 bits in the byte order.
QByteArray tiffNumber(std::uint16_t value, bool isBigEndian);
QByteArray tiffNumber(std::uint32_t value, bool isBigEndian);

/// One directory of a TIFF file under construction.
class TiffDirectoryBuilder {
public:
    explicit TiffDirectoryBuilder(bool isBigEndian = false) : m_isBigEndian(isBigEndian) {}

    void addShorts(std::uint16_t tag, const std::vector<std::uint16_t>& values);
    void addLongs(std::uint16_t tag, const std::vector<qsizetype>& values);
    void addLong(std::uint16_t tag, qsizetype value) { addLongs(tag, {value}); }
    void addBytes(std::uint16_t tag, const QByteArray& bytes);
    void addText(std::uint16_t tag, const QByteArray& text);
    /// Fractions of 10,000; `signedType` as DNG wants it for matrices.
    void addRationals(std::uint16_t tag, const std::vector<float>& values, bool signedType);
    /// An undefined value of bytes that stand elsewhere in the file.
    void addElsewhere(std::uint16_t tag, qsizetype offset, qsizetype length);

    /// Bytes of the directory with the values that do not fit into it.
    qsizetype size() const;
    /// The directory as it stands at `offset` of the file; `next` is where the following one stands, or 0.
    QByteArray written(qsizetype offset, qsizetype next) const;

private:
    struct Entry {
        std::uint16_t tag;
        std::uint16_t type;
        std::uint32_t count;
        QByteArray value;
    };

    void add(std::uint16_t tag, std::uint16_t type, std::size_t count, const QByteArray& value);
    template <typename Integer>
    QByteArray number(Integer value) const {
        return tiffNumber(value, m_isBigEndian);
    }

    bool m_isBigEndian;
    std::vector<Entry> m_entries;
};

} // namespace ostrelle
