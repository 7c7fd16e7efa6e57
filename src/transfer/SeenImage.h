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

/// The state of an image when a scan looked at it.
struct SeenImage {
    QString name;
    std::optional<ProcessedFileEntry> entry;       ///< nothing if it is gone or its attributes cannot be read
    std::optional<EditConditions> conditions = {}; ///< only if requested
};

/// Looks at each image once; for those in `unwritable`, also at their edit conditions. Reads the disk: for
/// worker threads.
QList<SeenImage> seeImages(const QString& folder, const QStringList& names,
                           const QSet<QString>& unwritable = {});

} // namespace ostrelle
