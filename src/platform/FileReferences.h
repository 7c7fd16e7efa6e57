// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

namespace ostrelle {

/// What a stored reference leads to now.
struct ResolvedFile {
    QString path;
    bool isStale = false; ///< the thing at the path is no longer the one that was referred to
};

/// Opaque references to a folder or file that the user chose, to be stored and resolved in a later run.
/// Both operations throw an Error.
class FileReferences {
public:
    virtual ~FileReferences() = default;

    virtual QByteArray make(const QString& path) const = 0;
    virtual ResolvedFile resolve(const QByteArray& reference) const = 0;
};

} // namespace ostrelle
