// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/PlainLog.h"
#include "transfer/ftp/FTPFileInfo.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace ostrelle {

/// Parses the reply to an FTP LIST command, in the form of `ls -l` or, failing that, in any form with a size
/// followed by a name. Lines in neither form are logged and left out. Runs of blanks in a name become one
/// blank. All is logged with the password replaced by "***". Throws
/// FTPError::invalidListing when the bytes are not UTF-8. Time and memory grow with the listing's size.
QList<FTPFileInfo> parseListing(const QByteArray& bytes, const QString& password, PlainLog& log);

/// Hides a password in texts from elsewhere.
class PasswordMask {
public:
    explicit PasswordMask(const QString& password);

    /// The text with the password, as it is or percent-encoded, replaced by "***". An empty one is nowhere.
    QString applied(QString text) const;

private:
    QString m_password;
    QString m_encoded;
};

} // namespace ostrelle
