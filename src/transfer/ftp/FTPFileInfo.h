// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QtGlobal>

namespace ostrelle {

/// An entry of a server's folder, as its listing gives it. Nothing in it can be trusted.
struct FTPFileInfo {
    QString name; ///< without a path; may hold blanks
    qint64 size = 0;
    bool isDirectory = false;

    bool operator==(const FTPFileInfo&) const = default;
};

} // namespace ostrelle
