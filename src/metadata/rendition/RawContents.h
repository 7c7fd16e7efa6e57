// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/bytes/ByteSplice.h"
#include "metadata/rendition/FileBytes.h"
#include "metadata/rendition/PictureTurn.h"

#include <optional>
#include <vector>

namespace ostrelle {

/// What a RAW file holds besides its raw data.
struct RawContents {
    static constexpr std::size_t maximumJpegs = 32;

    /// Where the JPEGs are, according to the file. Unchecked, except that each range lies in the file; one
    /// that runs past the end of the file is cut off there.
    std::vector<ByteRange> jpegs;
    /// The orientation of the raw picture. Nothing when the file gives none; a damaged value means no turn.
    std::optional<PictureTurn> turn;
    /// Where the last byte named by the file's tables ends, even beyond the end of the file.
    qint64 end = 0;

    /// Takes note of bytes that should be there.
    void addRange(qint64 begin, qint64 length);
    /// Adds a JPEG that may be there.
    void addJpeg(const FileBytes& file, qint64 begin, qint64 length);
};

/// Reads the directories of TIFF-like files (NEF, ARW, CR2, DNG, ORF, PEF, RW2, SRW), the boxes of CR3 and
/// the header of RAF; nothing for other files. Time and memory are limited, whatever the bytes.
std::optional<RawContents> readRawContents(FileBytes& file);

} // namespace ostrelle
