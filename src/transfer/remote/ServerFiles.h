// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "transfer/ftp/FTPFileInfo.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace ostrelle {

/// A file that is not fetched for its name.
struct RefusedFile {
    QString name;
    QString reason; ///< a sentence
};

/// What a server's folder holds for us, in the order of its listing.
struct ServerFiles {
    QList<FTPFileInfo> images;
    QList<FTPFileInfo> metadata; ///< sidecars
    QStringList skipped;         ///< other files, each with its extension, as words for the log
    QList<RefusedFile> refused;  ///< images and sidecars

    bool isEmpty() const { return images.isEmpty() && metadata.isEmpty(); }
};

/// Whether a file system takes names for one that differ in case or Unicode composition.
enum class NameRules { exact, folding };

/// Sorts a listing by the extensions of its files; folders are left out. A name that is not a plain file name
/// is refused, since a server does not decide where files go, and so is the second of two names that are one
/// on the destination's file system.
ServerFiles sortListing(const QList<FTPFileInfo>& listing, NameRules rules);

} // namespace ostrelle
