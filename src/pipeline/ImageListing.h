// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

namespace ostrelle {

/// The images at the top level of a folder.
struct ImageListing {
    QStringList images; ///< file names, in the order of the folder
    qsizetype jpegCount = 0;
    QStringList illegible;   ///< names of images that are not UTF-8, as well as they can be shown
    qsizetype itemCount = 0; ///< of all that is in the folder and not hidden
};

/// What the user is told of an illegible name.
QString illegibleNameWords();

/// Lists what has an image's extension and is a file, directly or through a link: to open anything else, such
/// as a pipe, might take for ever. Hidden files are left out. Looks at the disk: for worker threads. Throws
/// FileError.
ImageListing listImages(const QString& folder);

} // namespace ostrelle
