// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/RawValue.h"

#include <array>

namespace ostrelle {

/// The protocol spoken to the remote server.
enum class TransferProtocol { ftp, sftp };

template <>
inline std::span<const RawValueRow<TransferProtocol>> rawValueRows<TransferProtocol>() {
    static constexpr std::array rows = {
        RawValueRow<TransferProtocol>{TransferProtocol::ftp, u"ftp", u"FTP"},
        RawValueRow<TransferProtocol>{TransferProtocol::sftp, u"sftp", u"SFTP"},
    };
    return rows;
}

/// The TCP port that the protocol's servers listen on by default (RFC 959, RFC 4251).
constexpr int defaultPort(TransferProtocol protocol) {
    return protocol == TransferProtocol::sftp ? 22 : 21;
}

} // namespace ostrelle
