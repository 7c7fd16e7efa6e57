// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/EditConditions.h"

#include <optional>

namespace ostrelle {

/// How an attempt to caption an image of auto mode ended.
enum class CaptionResult {
    done, ///< it needs no further attempt: it was captioned, or has a caption
    failed,
    unwritable, ///< failed, and will fail until the rights on the image or its folder change
    notBegun,   ///< it was sent away before its turn: nothing has been tried
    changed,    ///< it is no longer what the scan saw: nothing was written, and it is to be looked at anew
};

/// The same, with what an image that is unwritable waits for to change.
struct CaptionOutcome {
    CaptionResult result = CaptionResult::failed;
    std::optional<EditConditions> conditions = {};
};

} // namespace ostrelle
