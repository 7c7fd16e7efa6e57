// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

namespace ostrelle {

/// The images at the top level of a folder.
struct ImageListing {
    QStringList images; ///< file names, in the order of the folder
    qsizetype jpegCount = 0;
    QStringList illegible;   ///< names that are not UTF-8, decoded as well as possible
    qsizetype itemCount = 0; ///< everything in the folder that is not hidden
};

/// The sentence shown for an illegible name.
QString illegibleNameWords();

/// Lists the regular files, also through links, that have an image's extension: opening anything else, such
/// as a pipe, might block for ever. Hidden files are left out. Reads the disk: for worker threads. Throws
/// FileError.
ImageListing listImages(const QString& folder);

} // namespace ostrelle
