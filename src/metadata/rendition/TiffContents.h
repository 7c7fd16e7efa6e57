// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/rendition/RawContents.h"

#include <optional>

namespace ostrelle {

/// Reads the directories of a TIFF-like file whose header is at `base`, from which its offsets count; nothing
/// when there is no such header.
std::optional<RawContents> readTiffContents(FileBytes& file, qint64 base);

} // namespace ostrelle
