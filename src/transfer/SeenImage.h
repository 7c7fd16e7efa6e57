// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "state/ProcessedFileEntry.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// An image as it was when it was looked at.
struct SeenImage {
    QString name;
    std::optional<ProcessedFileEntry> entry; ///< nothing when it is gone or may not be looked at
};

/// Looks at each image once. For worker threads.
QList<SeenImage> seeImages(const QString& folder, const QStringList& names);

} // namespace ostrelle
