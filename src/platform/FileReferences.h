// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

namespace ostrelle {

/// What a stored reference leads to now.
struct ResolvedFile {
    QString path;
    bool isThere = false; ///< something is at the path
    bool isStale = false; ///< it is no longer the thing that was referred to
};

/// Opaque references to a folder or file that the user chose, to be stored and resolved in a later run.
/// All operations throw an Error, and may run in any thread: but for pathOf() they wait for the file system.
class FileReferences {
public:
    virtual ~FileReferences() = default;

    virtual QByteArray make(const QString& path) const = 0;
    /// Where the reference leads, whether or not anything is there.
    virtual QString pathOf(const QByteArray& reference) const = 0;
    virtual ResolvedFile resolve(const QByteArray& reference) const = 0;
};

} // namespace ostrelle
