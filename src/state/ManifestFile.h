// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "state/ProcessedFileEntry.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <optional>
#include <utility>

namespace ostrelle {

/// The file of a manifest: a JSON array of objects with "filename", "fileSize" and "modificationDate".
/// Keeps the encoded text that it last read or wrote, so that a save encodes only new entries. For one thread
/// at a time.
class ManifestFile {
public:
    /// What a save found.
    struct Outcome {
        QList<ProcessedFileEntry> foreign; ///< added by other processes since the file was last read
        bool isNothingLost = true;         ///< false if a damaged file was replaced without a copy
    };

    /// In bytes: larger files are neither read nor written. Enough for some 700,000 entries.
    static constexpr qint64 largestFile = qint64{64} * 1024 * 1024;

    explicit ManifestFile(QString path) : m_path(std::move(path)) {}

    /// All entries. Throws Error if the file cannot be read or any of them is invalid.
    QList<ProcessedFileEntry> load();

    /// Adds the entries to the current contents of the file and replaces it. An invalid file is set aside
    /// under a name with ".broken", unless there are five of those. Throws Error; the next call then writes
    /// these entries too.
    Outcome append(const QList<ProcessedFileEntry>& entries);

    /// The entries that other processes have added since the file was last read. Throws Error; an invalid
    /// file is left to append().
    QList<ProcessedFileEntry> refresh();

private:
    /// Differs once the file is no longer the one last read or written.
    struct Identity {
        quint64 device;
        quint64 inode;
        qint64 size;
        qint64 seconds;
        qint64 nanoseconds;

        bool operator==(const Identity&) const = default;
        static std::optional<Identity> of(const QString& path);
    };

    bool takeIn();
    void takeInBytes(const QByteArray& bytes);
    bool setAside() const;

    QString m_path;
    QByteArray m_array = "[]"; // the file as last read or written, from bracket to bracket
    std::optional<Identity> m_identity;
    QList<ProcessedFileEntry> m_unsaved; // not in the file yet
    QList<ProcessedFileEntry> m_foreign; // not returned to the caller yet
};

} // namespace ostrelle
