// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <vector>

namespace ostrelle {

/// A range of byte offsets.
struct ByteRange {
    qsizetype begin = 0;
    qsizetype end = 0;

    qsizetype size() const { return end - begin; }
    bool overlaps(const ByteRange& other) const { return begin < other.end && other.begin < end; }
    QByteArrayView of(QByteArrayView bytes) const { return bytes.sliced(begin, size()); }
};

/// New bytes in place of a range of old ones. An empty range is an insertion.
struct ByteSplice {
    ByteRange range;
    QByteArray bytes;

    qsizetype growth() const { return bytes.size() - range.size(); }
};

/// The bytes with the splices applied. Ranges must not overlap; insertions at one place keep their order.
QByteArray spliced(QByteArrayView bytes, const std::vector<ByteSplice>& splices);

} // namespace ostrelle
