// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"
#include "platform/FileStamp.h"
#include "platform/PlainLog.h"

#include <QCoroTask>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QThreadPool>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

#include "journal/JournalDatabase.h"
#include "journal/JournalEntry.h"

namespace ostrelle {

/// Every caption that goes into a file, with the caption that was there before. A journal that cannot be used
/// never stops a caption: it is left out, and `trouble` tells why. For the thread of the event loop; the
/// database has a thread of its own.
class Journal {
public:
    /// How long entries stay.
    static constexpr std::chrono::days usualAge{90};

    /// Opens nothing yet. Clock and log must outlive the journal.
    Journal(QString file, Clock& clock, PlainLog& log);
    /// Waits briefly for what is under way.
    ~Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    /// What is written from now on belongs together.
    void beginRun();

    /// Keeps the entry before its file is written, and returns its key. Does not wait long: a locked or
    /// hanging journal gets the entry later, or never. Fills in the key, the run, the time and the process.
    QCoro::Task<QString> begin(JournalEntry entry);
    /// Tells what became of it: the caption as it stands in the file now, and what the image file looks like.
    /// Nobody has to await it.
    QCoro::Task<> end(QString key, JournalEntry::State state, std::optional<FileStamp> image = {},
                      std::optional<QString> caption = {});

    // Throw JournalError.

    QCoro::Task<std::optional<JournalEntry>> newestOf(QString file);
    QCoro::Task<QList<JournalEntry>> newestLike(qint64 size, qint64 inode);
    QCoro::Task<QList<JournalEntry>> newestRun();
    QCoro::Task<QList<JournalEntry>> between(QDateTime from, QDateTime to);
    QCoro::Task<QList<JournalEntry>> unsettled();
    QCoro::Task<qint64> forget(QDateTime before);

    /// Resumes when what was told so far is kept, or the disk does not answer.
    QCoro::Task<> finished();

    /// Why no entries are kept, a sentence; empty while they are.
    const QString& trouble() const { return m_trouble; }

private:
    template <typename Answer>
    QCoro::Task<Answer> ask(std::function<Answer(JournalDatabase&)> question);
    QCoro::Task<> keep(JournalEntry entry);
    QCoro::Task<> lastAnswer();
    void tell(const QString& notice);

    struct Connection;

    QString m_file;
    Clock& m_clock;
    PlainLog& m_log;
    QString m_run;
    QString m_trouble;
    std::shared_ptr<Connection> m_connection; ///< used on the pool's thread only
    std::shared_ptr<const bool> m_life =
        std::make_shared<const bool>(true); ///< lets a resumed task see that we are gone
    std::unique_ptr<QThreadPool> m_thread = std::make_unique<QThreadPool>();
    bool m_isHanging = false; ///< a disk that does not answer holds up one caption, not all
};

} // namespace ostrelle
