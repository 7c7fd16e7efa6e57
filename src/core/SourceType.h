// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/RawValue.h"

#include <array>

namespace ostrelle {

/// Where the images come from.
enum class SourceType { local, ftp };

template <>
inline std::span<const RawValueRow<SourceType>> rawValueRows<SourceType>() {
    static constexpr std::array rows = {
        RawValueRow<SourceType>{SourceType::local, u"local", u"Local Folder"},
        RawValueRow<SourceType>{SourceType::ftp, u"ftp", u"FTP Server"},
    };
    return rows;
}

} // namespace ostrelle
