// SPDX-License-Identifier: GPL-3.0-or-later
#include "standins/TiffBuilder.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace ostrelle {

void TiffDirectoryBuilder::addRationals(std::uint16_t tag, const std::vector<float>& values,
                                        bool signedType) {
    QByteArray bytes;
    for (const float value : values) {
        bytes += number(static_cast<std::uint32_t>(std::lround(value * 10000)));
        bytes += number(std::uint32_t{10000});
    }
    add(tag, signedType ? 10 : 5, std::ssize(values), bytes);
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
