// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace ostrelle {

/// Checks whether an existing file could be replaced by one of about its size, from its rights, its folder's
/// and the free space on its file system. Changes nothing. Throws FileError, as the write would.
void requireReplaceable(const QString& path);

} // namespace ostrelle
