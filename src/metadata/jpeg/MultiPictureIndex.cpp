// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/jpeg/MultiPictureIndex.h"

#include "metadata/bytes/TiffBlock.h"

#include <optional>

namespace ostrelle {

namespace {

constexpr qsizetype entrySize = 16;
constexpr qsizetype sizeField = 4;
constexpr qsizetype offsetField = 8;

/// The range of the picture entries; empty when they cannot be read.
ByteRange entriesOf(const TiffBlock& block) {
    const std::optional<TiffDirectory> directory = block.firstDirectory();
    const std::optional<TiffEntry> entries =
        directory ? directory->find(tiff::multiPictureEntries) : std::nullopt;
    return entries && block.value(*entries) ? block.valueRange(*entries) : ByteRange();
}

} // namespace

QByteArray shiftedMultiPictureIndex(QByteArrayView index, qsizetype growth, qsizetype growthBehind) {
    QByteArray shifted = index.toByteArray();
    const std::optional<TiffBlock> block = TiffBlock::open(index);
    if (!block) {
        return shifted;
    }
    const auto add = [&](qsizetype at, qsizetype amount) {
        const qsizetype value = block->longAt(at) + amount;
        shifted.replace(at, 4, tiffLong(static_cast<quint32>(value), block->isBigEndian()));
    };
    const ByteRange entries = entriesOf(*block);
    for (qsizetype at = entries.begin; at + entrySize <= entries.end; at += entrySize) {
        const bool isFirst = block->longAt(at + offsetField) == 0;
        if (!isFirst) {
            add(at + offsetField, growthBehind);
        } else if (block->longAt(at + sizeField) != 0) {
            add(at + sizeField, growth);
        }
    }
    return shifted;
}

} // namespace ostrelle
