// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/bytes/ByteSplice.h"
#include "metadata/rendition/FileBytes.h"
#include "metadata/rendition/PictureTurn.h"

#include <optional>
#include <vector>

namespace ostrelle {

/// What stands in a RAW file around its raw data.
struct RawContents {
    static constexpr std::size_t maximumJpegs = 32;

    /// Where the file says that a JPEG lies: unchecked, but for begin and end, which lie in the file. One
    /// that is cut off by the end of the file ends there.
    std::vector<ByteRange> jpegs;
    /// How the raw picture is turned. Nothing when the file does not say; a damaged value turns nothing.
    std::optional<PictureTurn> turn;

    /// Notes a JPEG that may lie there.
    void addJpeg(const FileBytes& file, qint64 begin, qint64 length);
};

/// Reads the directories of the files that are built as TIFF is (NEF, ARW, CR2, DNG, ORF, PEF, RW2, SRW),
/// the boxes of CR3 and the header of RAF; nothing when the file is none of these. Bounded in time and
/// memory whatever the bytes are.
std::optional<RawContents> readRawContents(FileBytes& file);

} // namespace ostrelle
