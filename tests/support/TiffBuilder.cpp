// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/TiffBuilder.h"

#include <QtEndian>
#include <algorithm>
#include <cmath>

namespace ostrelle {

namespace {

template <typename Integer>
QByteArray inOrder(Integer value, bool isBigEndian) {
    const Integer ordered = isBigEndian ? qToBigEndian(value) : qToLittleEndian(value);
    return {reinterpret_cast<const char*>(&ordered), sizeof ordered};
}

} // namespace

QByteArray tiffNumber(std::uint16_t value, bool isBigEndian) {
    return inOrder(value, isBigEndian);
}

QByteArray tiffNumber(std::uint32_t value, bool isBigEndian) {
    return inOrder(value, isBigEndian);
}

void TiffDirectoryBuilder::addShorts(std::uint16_t tag, const std::vector<std::uint16_t>& values) {
    QByteArray bytes;
    for (const std::uint16_t value : values) {
        bytes += number(value);
    }
    add(tag, 3, values.size(), bytes);
}

void TiffDirectoryBuilder::addLongs(std::uint16_t tag, const std::vector<qsizetype>& values) {
    QByteArray bytes;
    for (const qsizetype value : values) {
        bytes += number(static_cast<std::uint32_t>(value));
    }
    add(tag, 4, values.size(), bytes);
}

void TiffDirectoryBuilder::addBytes(std::uint16_t tag, const QByteArray& bytes) {
    add(tag, 1, static_cast<std::size_t>(bytes.size()), bytes);
}

void TiffDirectoryBuilder::addText(std::uint16_t tag, const QByteArray& text) {
    const QByteArray ended = text + '\0';
    add(tag, 2, static_cast<std::size_t>(ended.size()), ended);
}

void TiffDirectoryBuilder::addRationals(std::uint16_t tag, const std::vector<float>& values,
                                        bool signedType) {
    QByteArray bytes;
    for (const float value : values) {
        bytes += number(static_cast<std::uint32_t>(std::lround(value * 10000)));
        bytes += number(std::uint32_t{10000});
    }
    add(tag, signedType ? 10 : 5, values.size(), bytes);
}

void TiffDirectoryBuilder::addElsewhere(std::uint16_t tag, qsizetype offset, qsizetype length) {
    add(tag, 7, static_cast<std::size_t>(length), number(static_cast<std::uint32_t>(offset)));
}

void TiffDirectoryBuilder::add(std::uint16_t tag, std::uint16_t type, std::size_t count,
                               const QByteArray& value) {
    m_entries.push_back({tag, type, static_cast<std::uint32_t>(count), value});
}

qsizetype TiffDirectoryBuilder::size() const {
    return written(0, 0).size();
}

QByteArray TiffDirectoryBuilder::written(qsizetype offset, qsizetype next) const {
    std::vector<Entry> entries = m_entries;
    std::ranges::sort(entries, std::less(), &Entry::tag);
    QByteArray table = number(static_cast<std::uint16_t>(entries.size()));
    QByteArray values;
    const qsizetype valuesStart = offset + 6 + 12 * static_cast<qsizetype>(entries.size());
    for (const Entry& entry : entries) {
        table += number(entry.tag) + number(entry.type) + number(entry.count);
        if (entry.value.size() <= 4) {
            table += entry.value.leftJustified(4, '\0');
        } else {
            table += number(static_cast<std::uint32_t>(valuesStart + values.size()));
            values += entry.value.leftJustified(entry.value.size() + entry.value.size() % 2, '\0');
        }
    }
    return table + number(static_cast<std::uint32_t>(next)) + values;
}

} // namespace ostrelle
