// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/rendition/RawContents.h"

#include <optional>

namespace ostrelle {

/// What the directories of a TIFF-like file tell, whose header stands at `base` and from where its offsets
/// count; nothing when there is no such header.
std::optional<RawContents> readTiffContents(FileBytes& file, qint64 base);

} // namespace ostrelle
