// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/FtpEncryption.h"

#include <QByteArray>
#include <QString>
#include <optional>

namespace ostrelle {

/// How a connection is protected.
struct FtpSecurity {
    FtpEncryption encryption = FtpEncryption::none;
    /// The SHA-256 fingerprint of the only certificate to trust; empty for those that an authority has
    /// signed.
    QString trustedCertificate = {};

    bool operator==(const FtpSecurity&) const = default;
};

/// A folder or file on a server, and who asks for it.
struct FtpAddress {
    QString host;
    int port = 21;
    QString path; ///< absolute; a folder ends in a slash
    QString username;
    QString password;
    FtpSecurity security = {};

    /// As an ftp URL for the log, with "***" in place of the password. Nothing if the parts make no URL.
    std::optional<QString> shown() const;
    /// Where the path begins: at the folder that the user is in after the login, or at the topmost one.
    enum class Root { login, top };
    /// As an ftp URL without user and password, percent-encoded, in ASCII. The parts make a URL.
    QByteArray location(Root root) const;
};

} // namespace ostrelle
