// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Error.h"

#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <optional>

#include "journal/JournalEntry.h"

class QSqlQuery;

namespace ostrelle {

/// The journal cannot be read or written.
class JournalError : public Error {
public:
    using Error::Error;
};

/// SQLite finds that the file is no database, or a broken one.
class DamagedJournal : public JournalError {
public:
    using JournalError::JournalError;
};

/// The journal's SQLite file. For the one thread that opened it. Each operation throws JournalError; a locked
/// file is waited for up to ten seconds. Several programs may use one file.
class JournalDatabase {
public:
    /// Changed when a later program could not read what this one writes.
    static constexpr int version = 1;

    /// Opens the file, or makes it with mode 0600. One that is damaged is renamed first, and `notice` tells
    /// so. Also throws for one of a newer version, which stays as it is.
    explicit JournalDatabase(const QString& file);
    ~JournalDatabase();
    JournalDatabase(const JournalDatabase&) = delete;
    JournalDatabase& operator=(const JournalDatabase&) = delete;

    void insert(const JournalEntry& entry);
    void setState(const QString& key, JournalEntry::State state);
    /// What the image file looks like now, to find it by when it is renamed.
    void setPicture(const QString& key, qint64 size, qint64 inode);
    /// The caption as it stands in its file.
    void setCaption(const QString& key, const QString& caption);

    /// The newest entry of the image that was not taken back, or else the newest; nothing if there is none.
    std::optional<JournalEntry> newestOf(const QString& file);
    /// The newest entry of each image with the size and the inode, wherever it was.
    QList<JournalEntry> newestLike(qint64 size, qint64 inode);
    /// The entries of the newest run with a written caption, in their order.
    QList<JournalEntry> newestRun();
    /// The entries of that time with a written caption, in their order.
    QList<JournalEntry> between(const QDateTime& from, const QDateTime& to);
    /// The entries that were being written.
    QList<JournalEntry> unsettled();
    /// Removes what is older, for good. Returns how many entries.
    qint64 forget(const QDateTime& before);

    /// Renames the damaged file and begins a new one.
    void beginAnew(const DamagedJournal& damage);

    /// What the user should know of the file; empty when all is well.
    const QString& notice() const { return m_notice; }

private:
    void open();
    void close();
    QSqlQuery run(const QString& statement, const QVariantList& values = {});
    QList<JournalEntry> entries(const QString& condition, const QVariantList& values = {});

    QString m_file;
    QSqlDatabase m_database;
    QString m_notice;
};

} // namespace ostrelle
