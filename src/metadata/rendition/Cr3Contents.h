// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/rendition/RawContents.h"

#include <optional>

namespace ostrelle {

/// What the boxes of a CR3 file tell; nothing when it is none.
std::optional<RawContents> readCr3Contents(FileBytes& file);

} // namespace ostrelle
