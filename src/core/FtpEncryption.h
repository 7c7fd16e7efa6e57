// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/RawValue.h"

#include <array>

namespace ostrelle {

/// Whether transfers from the server are encrypted. Explicit TLS (RFC 4217) is required once it is chosen:
/// a server without it gets neither user name nor password.
enum class FtpEncryption { none, explicitTls };

template <>
inline std::span<const RawValueRow<FtpEncryption>> rawValueRows<FtpEncryption>() {
    static constexpr std::array rows = {
        RawValueRow<FtpEncryption>{FtpEncryption::none, u"none", u"None"},
        RawValueRow<FtpEncryption>{FtpEncryption::explicitTls, u"explicitTLS", u"TLS"},
    };
    return rows;
}

} // namespace ostrelle
