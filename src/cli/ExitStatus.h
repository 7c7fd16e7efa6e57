// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace ostrelle {

/// The program's exit status.
enum ExitStatus : int {
    success = 0,
    fileFailed = 1,          ///< a file could not be captioned, or the key could not be stored
    usageOrConfiguration = 2 ///< wrong usage, or a key or roster is missing
};

} // namespace ostrelle
