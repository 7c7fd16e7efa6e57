// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace ostrelle {

/// Removes from the folder what a kill in the middle of replaceFile() and its like has left there: this
/// user's files under a temporary name that no living process holds, a minute after they were last written;
/// an hour after it where the file system has no locks. Nothing else is touched, and what cannot be removed
/// stays. Reads the folder once; returns how many are gone.
int removeAbandonedTemporaryFiles(const QString& folder);

} // namespace ostrelle
