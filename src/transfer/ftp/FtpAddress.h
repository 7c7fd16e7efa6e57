// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace ostrelle {

/// A folder or file on a server, and who asks for it.
struct FtpAddress {
    QString host;
    int port = 21;
    QString path; ///< absolute; a folder ends in a slash
    QString username;
    QString password;

    /// As an ftp URL for the log, with "***" in place of the password. Nothing if the parts make no URL.
    std::optional<QString> shown() const;
    /// As an ftp URL without user and password, percent-encoded, in ASCII. The parts make a URL.
    QByteArray location() const;
};

} // namespace ostrelle
