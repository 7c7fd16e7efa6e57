// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/FileStamp.h"

#include <QDateTime>
#include <QString>
#include <optional>

namespace ostrelle {

/// A file as it was when it was captioned: one that has been replaced or touched since is another entry.
struct ProcessedFileEntry {
    QString filename;            ///< the last component of the path
    qint64 fileSize = 0;         ///< in bytes
    double modificationDate = 0; ///< seconds since 2001-01-01T00:00:00Z, with fractions; compared exactly

    bool operator==(const ProcessedFileEntry&) const = default;

    /// The file at the path as it is now, or the one that a symbolic link leads to; nothing if its
    /// attributes cannot be read. Reads the disk: for worker threads.
    static std::optional<ProcessedFileEntry> of(const QString& path);
    /// The file at the path as it was at the stamp.
    static std::optional<ProcessedFileEntry> of(const QString& path, const FileStamp& stamp);
    /// An entry for a file whose attributes are unknown: size 0 and this date.
    static ProcessedFileEntry placeholder(const QString& path, const QDateTime& date);

    /// The modification date without its fraction, in UTC. For dates of real files only.
    QDateTime date() const;
};

size_t qHash(const ProcessedFileEntry& entry, size_t seed = 0) noexcept;

} // namespace ostrelle
