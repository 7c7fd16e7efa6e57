// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/bytes/ByteSplice.h"

#include <map>

namespace ostrelle {

QByteArray spliced(QByteArrayView bytes, const std::vector<ByteSplice>& splices) {
    std::multimap<qsizetype, const ByteSplice*> inOrder; // keeps the order of equal keys
    qsizetype size = bytes.size();
    for (const ByteSplice& splice : splices) {
        inOrder.emplace(splice.range.begin, &splice);
        size += splice.growth();
    }
    QByteArray result;
    result.reserve(size);
    qsizetype done = 0;
    for (const auto& [begin, splice] : inOrder) {
        result += bytes.sliced(done, begin - done);
        result += splice->bytes;
        done = splice->range.end;
    }
    return result += bytes.sliced(done);
}

} // namespace ostrelle
