// SPDX-License-Identifier: GPL-3.0-or-later
#include "journal/Journal.h"

#include "core/Attempt.h"
#include "core/OnThreadPool.h"
#include "platform/Patience.h"

#include <QCoreApplication>
#include <QUuid>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// How long a caption waits for its entry.
constexpr std::chrono::seconds patience(2);
/// How long the end of the program waits for a journal that is locked.
constexpr std::chrono::seconds lastPatience(11);

} // namespace

/// The database, opened when it is first needed.
struct Journal::Connection {
    std::unique_ptr<JournalDatabase> database;

    /// Returns a notice for the user, if there is one.
    QString open(const QString& file, const QDateTime& oldest) {
        if (database) {
            return {};
        }
        auto opened = std::make_unique<JournalDatabase>(file);
        try {
            opened->forget(oldest);
        } catch (const DamagedJournal& damage) {
            opened->beginAnew(damage);
        }
        database = std::move(opened);
        return database->notice();
    }
};

Journal::Journal(QString file, Clock& clock, PlainLog& log)
    : m_file(std::move(file)), m_clock(clock), m_log(log), m_connection(std::make_shared<Connection>()) {
    m_thread->setMaxThreadCount(1);
    m_thread->setExpiryTimeout(-1); // a connection belongs to its thread
    beginRun();
}

/// A hanging thread is left behind, so that it cannot keep the program from ending.
Journal::~Journal() {
    constexpr int longestEnd = 3000; // milliseconds
    m_thread->start([connection = m_connection] { connection->database.reset(); });
    if (!m_thread->waitForDone(longestEnd)) {
        static_cast<void>(m_thread.release());
    }
}

void Journal::beginRun() {
    m_run = QUuid::createUuid().toString(QUuid::WithoutBraces);
}

template <typename Answer>
QCoro::Task<Answer> Journal::ask(std::function<Answer(JournalDatabase&)> question) {
    const QDateTime oldest = m_clock.now().addDays(-usualAge.count());
    struct Told {
        Answer answer;
        QString notice;
    };
    auto work = [connection = m_connection, file = m_file, oldest, question]() -> Told {
        const QString notice = connection->open(file, oldest);
        try {
            return {.answer = question(*connection->database), .notice = notice};
        } catch (const DamagedJournal& damage) {
            connection->database->beginAnew(damage);
            return {.answer = question(*connection->database), .notice = connection->database->notice()};
        }
    };
    const std::weak_ptr<const bool> life = m_life;
    const auto told = co_await attempt(onThreadPool(m_thread.get(), work));
    if (life.expired()) {
        throw JournalError(u"The program ends."_s);
    }
    if (!told) {
        tell(u"The journal of captions cannot be used: %1"_s.arg(told.words()));
        told.rethrow();
    }
    tell(told->notice);
    co_return told->answer;
}

void Journal::tell(const QString& notice) {
    if (!notice.isEmpty() && notice != m_trouble) {
        m_log.print(u"[Journal] "_s + notice);
        m_trouble = notice;
    }
}

QCoro::Task<QString> Journal::begin(JournalEntry entry) {
    const QString key = QUuid::createUuid().toString(QUuid::WithoutBraces);
    entry.key = key;
    entry.run = m_run;
    entry.at = m_clock.now().toUTC();
    entry.process = QCoreApplication::applicationPid();
    QCoro::Task<> keeping = keep(entry);
    if (!m_isHanging) {
        const std::weak_ptr<const bool> life = m_life;
        const bool isKept = co_await endsWithin(std::move(keeping), m_clock, patience);
        if (!life.expired()) {
            m_isHanging = !isKept;
        }
    }
    co_return key;
}

QCoro::Task<> Journal::keep(JournalEntry entry) {
    const std::weak_ptr<const bool> life = m_life;
    co_await attempt(ask<bool>([entry](JournalDatabase& database) {
        database.insert(entry);
        return true;
    }));
    if (!life.expired()) {
        m_isHanging = false;
    }
}

QCoro::Task<> Journal::end(QString key, JournalEntry::State state, std::optional<FileStamp> image,
                           std::optional<QString> caption) {
    co_await attempt(ask<bool>([key, state, image, caption](JournalDatabase& database) {
        database.setState(key, state);
        if (image) {
            database.setPicture(key, image->size, static_cast<qint64>(image->number));
        }
        if (caption) {
            database.setCaption(key, *caption);
        }
        return true;
    }));
}

QCoro::Task<> Journal::finished() {
    co_await endsWithin(lastAnswer(), m_clock, lastPatience);
}

QCoro::Task<> Journal::lastAnswer() {
    co_await onThreadPool(m_thread.get(), [] {});
}

QCoro::Task<std::optional<JournalEntry>> Journal::newestOf(QString file) {
    return ask<std::optional<JournalEntry>>(
        [file](JournalDatabase& database) { return database.newestOf(file); });
}

QCoro::Task<QList<JournalEntry>> Journal::newestLike(qint64 size, qint64 inode) {
    return ask<QList<JournalEntry>>(
        [size, inode](JournalDatabase& database) { return database.newestLike(size, inode); });
}

QCoro::Task<QList<JournalEntry>> Journal::newestRun() {
    return ask<QList<JournalEntry>>([](JournalDatabase& database) { return database.newestRun(); });
}

QCoro::Task<QList<JournalEntry>> Journal::between(QDateTime from, QDateTime to) {
    return ask<QList<JournalEntry>>(
        [from, to](JournalDatabase& database) { return database.between(from, to); });
}

QCoro::Task<QList<JournalEntry>> Journal::unsettled() {
    return ask<QList<JournalEntry>>([](JournalDatabase& database) { return database.unsettled(); });
}

QCoro::Task<qint64> Journal::forget(QDateTime before) {
    return ask<qint64>([before](JournalDatabase& database) { return database.forget(before); });
}

} // namespace ostrelle
