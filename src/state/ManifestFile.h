// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "state/ProcessedFileEntry.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <optional>

namespace ostrelle {

/// The file of a manifest: a JSON array of objects with "filename", "fileSize" and "modificationDate". It
/// keeps what was last read or written in its encoded form, so that a save encodes new entries only. For one
/// thread at a time.
class ManifestFile {
public:
    /// What a save found out.
    struct Outcome {
        QList<ProcessedFileEntry> foreign; ///< that other processes have added since the last time
        bool isNothingLost = true;         ///< false when a damaged file was replaced without a copy
    };

    /// Larger files, in bytes, are neither read nor written: some 700,000 entries.
    static constexpr qint64 largestFile = qint64{64} * 1024 * 1024;

    explicit ManifestFile(QString path) : m_path(std::move(path)) {}

    /// All entries. Throws Error when the file cannot be read, or one of its entries is not valid.
    QList<ProcessedFileEntry> load();

    /// Adds the entries and replaces the file, with what other processes have added to it by now. A file that
    /// is not valid is set aside under another name, ending in ".broken", unless five of them are there.
    /// Throws Error; the next call then writes these entries too.
    Outcome append(const QList<ProcessedFileEntry>& entries);

    /// The entries that other processes have added since the last time. Throws Error; a file that is not
    /// valid is left to append().
    QList<ProcessedFileEntry> refresh();

private:
    /// Tells whether the file is still the one that was last read or written.
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
    QByteArray m_array = "[]"; // what the file held when it was last read or written, from bracket to bracket
    std::optional<Identity> m_identity;
    QList<ProcessedFileEntry> m_unsaved; // that the file does not hold yet
    QList<ProcessedFileEntry> m_foreign; // that no outcome has told yet
};

} // namespace ostrelle
