// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace ostrelle {

/// True for a sidecar whose XML is not well formed, as when its upload has stopped half-way; no program has
/// written a caption into it. False for any other file, and for one that cannot be read. Reads the disk.
bool isHalfSidecar(const QString& path);

} // namespace ostrelle
