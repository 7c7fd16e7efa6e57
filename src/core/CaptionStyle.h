// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/RawValue.h"

#include <array>

namespace ostrelle {

/// The house style of a caption.
enum class CaptionStyle { apSports, gettySports, imagnImages, simple };

template <>
inline std::span<const RawValueRow<CaptionStyle>> rawValueRows<CaptionStyle>() {
    static constexpr std::array rows = {
        RawValueRow<CaptionStyle>{CaptionStyle::apSports, u"apSports", u"AP"},
        RawValueRow<CaptionStyle>{CaptionStyle::gettySports, u"gettySports", u"Getty"},
        RawValueRow<CaptionStyle>{CaptionStyle::imagnImages, u"imagnImages", u"Imagn"},
        RawValueRow<CaptionStyle>{CaptionStyle::simple, u"simple", u"Simple"},
    };
    return rows;
}

} // namespace ostrelle
