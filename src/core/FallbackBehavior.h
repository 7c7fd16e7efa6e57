// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/RawValue.h"

#include <array>

namespace ostrelle {

/// What the model should do with a picture it cannot place.
enum class FallbackBehavior { omitCaption, attemptCaption };

template <>
inline std::span<const RawValueRow<FallbackBehavior>> rawValueRows<FallbackBehavior>() {
    static constexpr std::array rows = {
        RawValueRow<FallbackBehavior>{FallbackBehavior::omitCaption, u"omitCaption",
                                      u"Leave Caption Field Blank"},
        RawValueRow<FallbackBehavior>{FallbackBehavior::attemptCaption, u"attemptCaption",
                                      u"Attempt to Write a Caption"},
    };
    return rows;
}

} // namespace ostrelle
