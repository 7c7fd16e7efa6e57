// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/MetadataStamp.h"

#include <QDateTime>
#include <QHash>
#include <QString>
#include <QStringList>

namespace ostrelle {

/// The images of the watched folder that were found captioned, so that none is read again until it changes.
/// Kept in memory only.
class CaptionedImages {
public:
    /// Forgets the images of any other folder.
    void enterFolder(const QString& folder);
    /// Forgets the images that are not among these.
    void keepOnly(const QStringList& names);

    /// The image had a caption when it was read. The stamp is from between `before` and the reading.
    void add(const QString& name, const MetadataStamp& stamp, const QDateTime& before,
             const QDateTime& after);
    /// The images that need not be read again while their stamp is the same.
    const QHash<QString, MetadataStamp>& settled() const { return m_settled; }

private:
    struct Reading {
        MetadataStamp stamp;
        QDateTime readAt; ///< when it had first been read with this stamp
    };

    QString m_folder;
    QHash<QString, Reading> m_readings;
    QHash<QString, MetadataStamp> m_settled;
};

/// The names without those of settled images that have not changed. Reads the disk: for worker threads.
QStringList withoutUnchanged(const QString& folder, const QStringList& names,
                             const QHash<QString, MetadataStamp>& settled);

} // namespace ostrelle
