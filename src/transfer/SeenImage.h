// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/EditConditions.h"
#include "metadata/MetadataStamp.h"
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
    std::optional<MetadataStamp> stamp = {};       ///< only if requested
};

/// The names of images to look at more closely.
struct CloserLook {
    QSet<QString> conditions = {};
    QSet<QString> stamp = {};
};

/// Looks at each image once. Reads the disk: for worker threads.
QList<SeenImage> seeImages(const QString& folder, const QStringList& names, const CloserLook& closer = {});

} // namespace ostrelle
