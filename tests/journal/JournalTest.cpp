// SPDX-License-Identifier: GPL-3.0-or-later
#include "journal/Journal.h"

#include "support/Await.h"
#include "support/Failure.h"
#include "support/FileFacts.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

using State = JournalEntry::State;

class KeptNotices : public PlainLog {
public:
    void print(const QString& line) override { lines.append(line); }
    QStringList lines;
};

class JournalTest : public testing::Test {
protected:
    QString write(Journal& journal, const QString& image, State state = State::written) {
        JournalEntry entry;
        entry.file = image;
        entry.before = u"Embargoed words."_s;
        entry.after = u"after"_s;
        const QString id = await(journal.begin(entry));
        await(journal.end(id, state));
        return id;
    }
    /// Carries out a statement as another program would.
    void alter(const QString& statement) const {
        {
            QSqlDatabase other = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"other"_s);
            other.setDatabaseName(file);
            EXPECT_TRUE(other.open());
            QSqlQuery query(other);
            EXPECT_TRUE(query.exec(statement)) << statement.toStdString();
        }
        QSqlDatabase::removeDatabase(u"other"_s);
    }

    QTemporaryDir folder;
    const QString file = folder.filePath(u"data/Journal.sqlite"_s);
    VirtualClock clock;
    KeptNotices log;
};

QStringList filesOf(const QList<JournalEntry>& entries) {
    QStringList files;
    for (const JournalEntry& entry : entries) {
        files.append(entry.file);
    }
    return files;
}

} // namespace

TEST_F(JournalTest, TheEntryIsThereBeforeTheFileIsWrittenAndOutlivesTheProgram) {
    {
        Journal journal(file, clock, log);
        JournalEntry entry;
        entry.file = u"/game/a.jpg"_s;
        entry.after = u"after"_s;
        await(journal.begin(entry));
    }
    Journal next(file, clock, log);
    const QList<JournalEntry> unsettled = await(next.unsettled());
    ASSERT_EQ(filesOf(unsettled), QStringList(u"/game/a.jpg"_s));
    EXPECT_EQ(unsettled.first().before, std::nullopt);
    EXPECT_EQ(unsettled.first().after, u"after"_s);
    EXPECT_EQ(unsettled.first().at, clock.now().toUTC());
    EXPECT_TRUE(log.lines.isEmpty());
    struct stat status = {};
    ASSERT_EQ(stat(QFile::encodeName(file).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, mode_t{0600});
}

TEST_F(JournalTest, TheLastRunIsTheNewestWithACaptionInAnyProgram) {
    Journal journal(file, clock, log);
    Journal other(file, clock, log);
    write(journal, u"/a"_s);
    write(other, u"/b"_s);
    write(journal, u"/c"_s);
    EXPECT_EQ(filesOf(await(other.newestRun())), (QStringList{u"/a"_s, u"/c"_s}));
    journal.beginRun();
    write(journal, u"/d"_s, State::failed);
    EXPECT_EQ(filesOf(await(other.newestRun())), (QStringList{u"/a"_s, u"/c"_s}));
    write(journal, u"/d"_s);
    EXPECT_EQ(filesOf(await(other.newestRun())), QStringList{u"/d"_s});
}

TEST_F(JournalTest, OldEntriesAreForgottenByThemselvesAndOnRequest) {
    {
        Journal journal(file, clock, log);
        write(journal, u"/old"_s);
        clock.advance(Journal::usualAge - std::chrono::days(1));
        write(journal, u"/new"_s);
    }
    clock.advance(std::chrono::days(2));
    Journal journal(file, clock, log);
    EXPECT_EQ(await(journal.newestOf(u"/old"_s)), std::nullopt);
    EXPECT_TRUE(await(journal.newestOf(u"/new"_s)));
    EXPECT_EQ(await(journal.forget(clock.now())), 1);
    EXPECT_FALSE(contentsOf(file).contains("Embargoed")); // no trace stays
}

TEST_F(JournalTest, ADamagedOneIsSetAsideAndANewOneBegun) {
    QDir().mkpath(QFileInfo(file).path());
    writeFile(file, QByteArray("SQLite format 3").append(5000, 'x'));
    Journal journal(file, clock, log);
    write(journal, u"/a"_s);
    EXPECT_TRUE(await(journal.newestOf(u"/a"_s)));
    ASSERT_EQ(log.lines.size(), 1);
    EXPECT_TRUE(log.lines.first().contains(u"was damaged"_s));
    EXPECT_EQ(QDir(folder.filePath(u"data"_s)).entryList({u"*.damaged-*"_s}).size(), 1);
}

TEST_F(JournalTest, OneThatIsDamagedInItsMiddleIsSetAsideWhenItShows) {
    {
        Journal journal(file, clock, log);
        for (int index = 0; index < 200; ++index) {
            write(journal, u"/game/%1.jpg"_s.arg(index));
        }
    }
    QByteArray bytes = contentsOf(file);
    bytes.replace(4096, bytes.size() - 4096, QByteArray(bytes.size() - 4096, 'x'));
    writeFile(file, bytes);
    Journal journal(file, clock, log);
    write(journal, u"/a"_s);
    EXPECT_TRUE(await(journal.newestOf(u"/a"_s)));
    EXPECT_TRUE(log.lines.join(u' ').contains(u"was damaged"_s));
}

TEST_F(JournalTest, OneThatCannotBeUsedStaysAsItIsAndStopsNoCaption) {
    write(*std::make_unique<Journal>(file, clock, log), u"/a"_s);
    alter(u"PRAGMA user_version = 7"_s);
    Journal newer(file, clock, log);
    write(newer, u"/b"_s);
    write(newer, u"/c"_s);
    ASSERT_EQ(log.lines.size(), 1); // told once
    EXPECT_TRUE(log.lines.first().contains(u"newer version"_s));
    EXPECT_FALSE(failureOf<JournalError>(newer.newestRun()).localizedDescription().isEmpty());

    Journal nowhere(u"/proc/nowhere/Journal.sqlite"_s, clock, log);
    write(nowhere, u"/b"_s);
    EXPECT_FALSE(nowhere.trouble().isEmpty());
}

} // namespace ostrelle
