// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/rendition/RawContents.h"

#include <optional>

namespace ostrelle {

/// Reads the boxes of a CR3 file; nothing when it is not one.
std::optional<RawContents> readCr3Contents(FileBytes& file);

} // namespace ostrelle
