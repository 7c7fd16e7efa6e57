// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMimeData>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// What files dropped on the main panel are for, judged by their names alone: they may be on a share that
/// hangs.
struct DroppedFiles {
    enum class Kind { folder, images, codeReplacements };

    Kind kind = Kind::images;
    QStringList paths; ///< just one for a folder or a roster, which may turn out to be something else

    /// Nothing when the panel cannot use them: it takes one folder, one text file, or images with their
    /// sidecars and nothing else. A name that gives no clue counts as a folder.
    static std::optional<DroppedFiles> of(const QMimeData& data);
};

} // namespace ostrelle
