// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

namespace ostrelle {

/// Where a stored reference leads now.
struct ResolvedFile {
    QString path;
    bool isThere = false; ///< something exists at the path
    bool isStale = false; ///< it is no longer what the reference was made for
};

/// Opaque references to a folder or file that the user chose, to be stored and resolved in a later run. All
/// operations throw an Error and may run on any thread; all but pathOf() wait for the file system.
class FileReferences {
public:
    virtual ~FileReferences() = default;

    virtual QByteArray make(const QString& path) const = 0;
    /// Where the reference leads, whether or not anything exists there.
    virtual QString pathOf(const QByteArray& reference) const = 0;
    virtual ResolvedFile resolve(const QByteArray& reference) const = 0;
};

} // namespace ostrelle
