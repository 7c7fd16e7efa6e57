// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMimeData>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// What files mean that are dropped on the main panel, by their names alone: they may lie on a share that
/// hangs.
struct DroppedFiles {
    enum class Kind { folder, images, codeReplacements };

    Kind kind = Kind::images;
    QStringList paths; ///< of a folder or a roster just one, which may turn out to be something else

    /// Nothing when the panel has no use for them: one folder, one text file, or images with their sidecars
    /// and nothing else. One whose name tells nothing counts as a folder.
    static std::optional<DroppedFiles> of(const QMimeData& data);
};

} // namespace ostrelle
