// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace ostrelle {

/// How an attempt to caption a single image ended.
enum class CaptionResult {
    done, ///< it needs no further attempt: it was captioned, or has a caption
    failed,
    notBegun, ///< it was sent away before its turn: nothing has been tried
};

} // namespace ostrelle
