// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/EditConditions.h"
#include "state/ProcessedFileEntry.h"

#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// An image as it was when it was looked at.
struct SeenImage {
    QString name;
    std::optional<ProcessedFileEntry> entry;       ///< nothing when it is gone or may not be looked at
    std::optional<EditConditions> conditions = {}; ///< where they were asked for
};

/// Looks at each image once, and at those of `unwritable` for what keeps them from being edited. For worker
/// threads.
QList<SeenImage> seeImages(const QString& folder, const QStringList& names,
                           const QSet<QString>& unwritable = {});

} // namespace ostrelle
