// SPDX-License-Identifier: GPL-3.0-or-later
#include "journal/JournalDatabase.h"

#include <fcntl.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>
#include <QStorageInfo>
#include <QUuid>
#include <QVariant>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString columns =
    u"key, run, at, file, size, inode, before, after, style, sport, model, state, process"_s;

/// Names that SQLite gives the files beside its own.
const QStringList companions = {QString(), u"-wal"_s, u"-shm"_s, u"-journal"_s};

/// Private from the start: captions may be under embargo. SQLite gives the files beside it the same mode.
void makePrivate(const QString& file) {
    QDir().mkpath(QFileInfo(file).path());
    const int descriptor =
        ::open(QFile::encodeName(file).constData(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor >= 0) {
        ::close(descriptor);
    }
}

/// Returns the new name of a file that cannot be used.
QString setAside(const QString& file) {
    const QString name =
        file + u".damaged-"_s + QDateTime::currentDateTimeUtc().toString(u"yyyyMMdd'T'HHmmsszzz"_s);
    for (const QString& companion : companions) {
        QFile::rename(file + companion, name + companion);
    }
    return name;
}

/// SQLITE_CORRUPT and SQLITE_NOTADB, https://www.sqlite.org/rescode.html
bool isDamage(const QSqlError& error) {
    const int code = error.nativeErrorCode().toInt() & 0xFF;
    return code == 11 || code == 26;
}

/// A write-ahead log needs memory that programs share, which a network has not.
bool isOnNetwork(const QString& file) {
    const QByteArray type = QStorageInfo(QFileInfo(file).path()).fileSystemType();
    return type.startsWith("nfs") || type.startsWith("cifs") || type.startsWith("smb") ||
           type.startsWith("fuse");
}

/// A null text is an empty one here.
QVariant stored(const QString& text) {
    return text.isNull() ? QString(u""_s) : text;
}

QVariant stored(const std::optional<QString>& text) {
    return text ? stored(*text) : QVariant(QMetaType::fromType<QString>());
}

JournalEntry entryIn(const QSqlQuery& row) {
    const QVariant before = row.value(6);
    return {
        .key = row.value(0).toString(),
        .run = row.value(1).toString(),
        .at = QDateTime::fromMSecsSinceEpoch(row.value(2).toLongLong()).toUTC(),
        .file = row.value(3).toString(),
        .size = row.value(4).toLongLong(),
        .inode = row.value(5).toLongLong(),
        .before = before.isNull() ? std::nullopt : std::optional(before.toString()),
        .after = row.value(7).toString(),
        .style = row.value(8).toString(),
        .sport = row.value(9).toString(),
        .model = row.value(10).toString(),
        .state =
            fromRawValue<JournalEntry::State>(row.value(11).toString()).value_or(JournalEntry::State::failed),
        .process = row.value(12).toLongLong()};
}

} // namespace

JournalDatabase::JournalDatabase(const QString& file) : m_file(file) {
    try {
        open();
    } catch (const DamagedJournal& damage) {
        beginAnew(damage);
    } catch (...) {
        close();
        throw;
    }
}

void JournalDatabase::beginAnew(const DamagedJournal& damage) {
    close();
    m_notice = u"The journal of captions was damaged (%1). It is kept as %2, and a new one was begun."_s.arg(
        damage.localizedDescription(), setAside(m_file));
    open();
}

JournalDatabase::~JournalDatabase() {
    close();
}

void JournalDatabase::close() {
    const QString name = m_database.connectionName();
    m_database.close();
    m_database = {};
    QSqlDatabase::removeDatabase(name);
}

void JournalDatabase::open() {
    makePrivate(m_file);
    m_database = QSqlDatabase::addDatabase(u"QSQLITE"_s, QUuid::createUuid().toString());
    m_database.setDatabaseName(m_file);
    m_database.setConnectOptions(u"QSQLITE_BUSY_TIMEOUT=10000"_s);
    if (!m_database.open()) {
        throw JournalError(m_database.lastError().text().trimmed());
    }
    run(isOnNetwork(m_file) ? u"PRAGMA journal_mode = DELETE"_s : u"PRAGMA journal_mode = WAL"_s);
    run(u"PRAGMA synchronous = NORMAL"_s);
    QSqlQuery found = run(u"PRAGMA user_version"_s);
    const int foundVersion = found.next() ? found.value(0).toInt() : 0;
    found.finish();
    if (foundVersion > version) {
        throw JournalError(u"The journal of captions is of a newer version of this program."_s);
    }
    run(u"CREATE TABLE IF NOT EXISTS captions (id INTEGER PRIMARY KEY AUTOINCREMENT, key TEXT NOT NULL "
        u"UNIQUE, run TEXT NOT NULL, "
        "at INTEGER NOT NULL, file TEXT NOT NULL, size INTEGER NOT NULL, inode INTEGER NOT NULL, before "
        "TEXT, "
        "after TEXT NOT NULL, style TEXT NOT NULL, sport TEXT NOT NULL, model TEXT NOT NULL, "
        "state TEXT NOT NULL, process INTEGER NOT NULL)"_s);
    run(u"CREATE INDEX IF NOT EXISTS captions_by_file ON captions (file, id)"_s);
    run(u"CREATE INDEX IF NOT EXISTS captions_by_run ON captions (run)"_s);
    run(u"CREATE INDEX IF NOT EXISTS captions_by_picture ON captions (inode, size)"_s);
    run(u"CREATE INDEX IF NOT EXISTS captions_by_state ON captions (state) WHERE state = 'writing'"_s);
    run(u"PRAGMA user_version = %1"_s.arg(version));
}

QSqlQuery JournalDatabase::run(const QString& statement, const QVariantList& values) {
    QSqlQuery query(m_database);
    query.setForwardOnly(true);
    bool isDone = query.prepare(statement);
    for (const QVariant& value : values) {
        query.addBindValue(value);
    }
    isDone = isDone && query.exec();
    if (!isDone) {
        const QString words = query.lastError().text().trimmed();
        if (isDamage(query.lastError())) {
            throw DamagedJournal(words);
        }
        throw JournalError(words);
    }
    return query;
}

void JournalDatabase::insert(const JournalEntry& entry) {
    run(u"INSERT INTO captions (key, run, at, file, size, inode, before, after, style, sport, model, state, "
        u"process) "
        "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"_s,
        {stored(entry.key), stored(entry.run), entry.at.toMSecsSinceEpoch(), stored(entry.file), entry.size,
         entry.inode, stored(entry.before), stored(entry.after), stored(entry.style), stored(entry.sport),
         stored(entry.model), rawValue(entry.state), entry.process});
}

void JournalDatabase::setState(const QString& key, JournalEntry::State state) {
    run(u"UPDATE captions SET state = ? WHERE key = ?"_s, {rawValue(state), key});
}

void JournalDatabase::setPicture(const QString& key, qint64 size, qint64 inode) {
    run(u"UPDATE captions SET size = ?, inode = ? WHERE key = ?"_s, {size, inode, key});
}

void JournalDatabase::setCaption(const QString& key, const QString& caption) {
    run(u"UPDATE captions SET after = ? WHERE key = ?"_s, {stored(caption), key});
}

QList<JournalEntry> JournalDatabase::entries(const QString& condition, const QVariantList& values) {
    QSqlQuery rows = run(u"SELECT %1 FROM captions WHERE %2"_s.arg(columns, condition), values);
    QList<JournalEntry> found;
    while (rows.next()) {
        found.append(entryIn(rows));
    }
    return found;
}

std::optional<JournalEntry> JournalDatabase::newestOf(const QString& file) {
    const QList<JournalEntry> found =
        entries(u"file = ? AND state <> 'failed' ORDER BY state = 'undone', id DESC LIMIT 1"_s, {file});
    return found.isEmpty() ? std::nullopt : std::optional(found.constFirst());
}

QList<JournalEntry> JournalDatabase::newestLike(qint64 size, qint64 inode) {
    return entries(u"id IN (SELECT max(id) FROM captions WHERE size = ? AND inode = ? AND state <> 'failed' "
                   "GROUP BY file) ORDER BY id DESC LIMIT 100"_s,
                   {size, inode});
}

QList<JournalEntry> JournalDatabase::newestRun() {
    return entries(u"run = (SELECT run FROM captions WHERE state <> 'failed' ORDER BY id DESC LIMIT 1) "
                   "AND state <> 'failed' ORDER BY id"_s);
}

QList<JournalEntry> JournalDatabase::between(const QDateTime& from, const QDateTime& to) {
    return entries(u"at >= ? AND at < ? AND state <> 'failed' ORDER BY id"_s,
                   {from.toMSecsSinceEpoch(), to.toMSecsSinceEpoch()});
}

QList<JournalEntry> JournalDatabase::unsettled() {
    return entries(u"state = 'writing' ORDER BY id"_s);
}

qint64 JournalDatabase::forget(const QDateTime& before) {
    run(u"PRAGMA secure_delete = ON"_s);
    const qint64 removed =
        run(u"DELETE FROM captions WHERE at < ?"_s, {before.toMSecsSinceEpoch()}).numRowsAffected();
    run(u"PRAGMA wal_checkpoint(TRUNCATE)"_s);
    return removed;
}

} // namespace ostrelle
