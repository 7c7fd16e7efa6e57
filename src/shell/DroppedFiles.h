// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMimeData>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// What files mean that are dropped on the main panel.
struct DroppedFiles {
    enum class Kind { folder, images, codeReplacements };

    Kind kind = Kind::images;
    QStringList paths; ///< of a folder or a roster just one

    /// Nothing when the panel has no use for them: one folder, one text file, or images with their sidecars
    /// and nothing else.
    static std::optional<DroppedFiles> of(const QMimeData& data);
};

} // namespace ostrelle
