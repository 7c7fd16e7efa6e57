// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace ostrelle {

/// Finds out whether an existing file could be replaced by one of about its size, from the rights on it and
/// on its folder and from the room on its file system, and changes nothing. Throws FileError, as the write
/// would.
void requireReplaceable(const QString& path);

} // namespace ostrelle
