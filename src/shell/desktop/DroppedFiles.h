// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/SourceType.h"

#include <QMimeData>
#include <QString>
#include <QStringList>

namespace ostrelle {

/// What files dropped on the main panel are for, judged by their names alone: they may be on a share that
/// hangs.
struct DroppedFiles {
    enum class Kind { useless, folder, images, codeReplacements };

    Kind kind = Kind::useless;
    QStringList paths = {};   ///< just one for a folder or a roster, which may turn out to be something else
    QStringList leftOut = {}; ///< names of files beside the images that are of no use; audio notes are

    /// The panel takes one folder, one text file, or images with what belongs to them. A name that gives no
    /// clue counts as a folder.
    static DroppedFiles of(const QMimeData& data);
    static DroppedFiles ofPaths(const QStringList& paths);

    /// What would happen to them, for the time while they are dragged.
    QString words(SourceType source) const;
};

} // namespace ostrelle
