// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace ostrelle {

/// Removes temporary files left in the folder when a process was killed during replaceFile() or the like:
/// this user's files under a temporary name that no living process holds, a minute after their last write, or
/// an hour where the file system has no locks. Touches nothing else and skips what it cannot remove. Reads
/// the folder once; returns the number of files removed.
int removeAbandonedTemporaryFiles(const QString& folder);

} // namespace ostrelle
