// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/JsonDefaultsStore.h"

#include "support/RecordingLog.h"
#include "support/Unprivileged.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDataStream>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QTimeZone>
#include <array>
#include <atomic>
#include <csignal>
#include <functional>
#include <limits>
#include <numeric>
#include <random>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

mode_t modeOf(const QString& path) {
    struct stat status{};
    EXPECT_EQ(::stat(QFile::encodeName(path).constData(), &status), 0);
    return status.st_mode & 07777U;
}

void setMode(const QString& path, mode_t mode) {
    EXPECT_EQ(::chmod(QFile::encodeName(path).constData(), mode), 0);
}

QByteArray contentsOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

/// Writes beyond so many bytes of a file fail, much as they do on a full disk.
void limitFileSize(rlim_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    EXPECT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    limit.rlim_cur = std::min(bytes, limit.rlim_max);
    EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
}

class JsonDefaultsStoreTest : public testing::Test {
protected:
    void writeFile(const QByteArray& bytes) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    QStringList files(const QString& pattern = u"*"_s) const {
        return QDir(folder.path())
            .entryList({pattern}, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
    }
    QVariant afterRestart(const QString& key) { return JsonDefaultsStore(path, log).value(key); }

    UnprivilegedFolder folder;
    QString path = folder.filePath(u"settings.json"_s);
    RecordingLog log;
};

/// All of a value: its type, the type of each element, and the sign of a zero.
QByteArray serialized(const QVariant& value) {
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << value;
    return bytes;
}

TEST_F(JsonDefaultsStoreTest, ValuesSurviveARestartWithTheirTypes) {
    QByteArray allBytes(256, Qt::Uninitialized);
    std::iota(allBytes.begin(), allBytes.end(), '\0');
    const QVariantList values = {
        true,
        false,
        qint64(0),
        std::numeric_limits<qint64>::max(),
        std::numeric_limits<qint64>::min(),
        qint64((1LL << 53) + 1), // not a double
        2.0,
        -0.0,
        0.1,
        9.3e18,
        std::numeric_limits<double>::denorm_min(),
        -std::numeric_limits<double>::infinity(),
        std::numeric_limits<double>::quiet_NaN(),
        u""_s,
        u"21"_s,
        u"Jos\u00e9 \U0001F3C8 \"quoted\" \\ \n\t\u2028"_s,
        QString(u'\0') + u"after NUL"_s,
        QByteArray(""),
        allBytes,
        QDateTime(QDate(1969, 12, 31), QTime(23, 59, 59, 7), Qt::UTC),
        QVariantList(),
        QVariantList{1.0, qint64(1), u"1"_s, true, QByteArray("1"), QVariantList{2.0}},
    };
    for (const QVariant& value : values) {
        JsonDefaultsStore store(path, log);
        store.set(u"key"_s, value);
        EXPECT_EQ(serialized(store.value(u"key"_s)), serialized(value)) << contentsOf(path).constData();
        EXPECT_EQ(serialized(afterRestart(u"key"_s)), serialized(value)) << contentsOf(path).constData();
    }
    EXPECT_EQ(log.lines, QStringList());
}

TEST_F(JsonDefaultsStoreTest, ATypedReadTakesNoOtherType) {
    JsonDefaultsStore store(path, log);
    store.set(u"text"_s, u"21"_s);
    store.set(u"integer"_s, qint64(1));
    EXPECT_EQ(store.get<qint64>(u"text"_s), std::nullopt);
    EXPECT_EQ(store.get<double>(u"integer"_s), std::nullopt);
    EXPECT_EQ(store.get<qint64>(u"integer"_s), 1);
}

TEST_F(JsonDefaultsStoreTest, TheFileIsSortedAndForItsUserOnly) {
    path = folder.filePath(u"parent/config/settings.json"_s);
    JsonDefaultsStore store(path, log);
    store.set(u"installed"_s, QDateTime(QDate(2024, 3, 1), QTime(20, 0), QTimeZone("America/New_York")));
    store.set(u"ftpPort"_s, qint64(21));
    EXPECT_EQ(contentsOf(path),
              "{\n    \"ftpPort\": {\n        \"integer\": 21\n    },\n"
              "    \"installed\": {\n        \"date\": \"2024-03-02T01:00:00.000Z\"\n    }\n}\n");
    EXPECT_EQ(modeOf(path), 0600U);
    EXPECT_EQ(modeOf(path + u".lock"_s), 0600U);
    EXPECT_EQ(modeOf(folder.filePath(u"parent/config"_s)), 0700U);

    setMode(path, 0644); // as an editor or a restored backup leaves it
    EXPECT_EQ(afterRestart(u"ftpPort"_s), QVariant(qint64(21)));
    EXPECT_EQ(modeOf(path), 0600U);
}

TEST_F(JsonDefaultsStoreTest, ReadingMakesNoFile) {
    EXPECT_FALSE(JsonDefaultsStore(path, log).exists(u"sport"_s));
    JsonDefaultsStore(path, log).remove(u"sport"_s);
    EXPECT_EQ(files(), QStringList());
}

TEST_F(JsonDefaultsStoreTest, AValueThatIsHeldIsNotWrittenAgain) {
    JsonDefaultsStore store(path, log);
    store.set(u"price"_s, 2.0);
    setMode(folder.path(), 0500); // so that a write would fail
    store.set(u"price"_s, 2.0);
    store.remove(u"absent"_s);
    setMode(folder.path(), 0700);
    EXPECT_EQ(log.lines, QStringList());
    store.set(u"price"_s, qint64(2));
    EXPECT_EQ(afterRestart(u"price"_s).typeId(), QMetaType::LongLong);
}

TEST_F(JsonDefaultsStoreTest, WhatHasNoStoredFormIsRefused) {
    QVariant nested = u"leaf"_s;
    for (int depth = 0; depth < 1000; ++depth) {
        nested = QVariantList{nested};
    }
    JsonDefaultsStore store(path, log);
    store.set(u"key"_s, u"before"_s);
    const QVariantList refused = {QVariant(21), QVariant(), QDateTime(), nested,
                                  QDateTime(QDate(12024, 1, 1), QTime(0, 0), QTimeZone::utc())};
    for (const QVariant& value : refused) {
        log.lines.clear();
        store.set(u"key"_s, value);
        ASSERT_EQ(log.lines.size(), 1) << value.typeName();
        EXPECT_TRUE(log.lines.first().startsWith("[DefaultsStore] The value for key cannot be stored"_L1));
        EXPECT_EQ(store.value(u"key"_s), u"before"_s);
    }
}

TEST_F(JsonDefaultsStoreTest, TwoStoresSeeEachOthersChangesAndLoseNone) {
    JsonDefaultsStore window(path, log);
    JsonDefaultsStore commandLine(path, log);
    window.set(u"sport"_s, u"soccer"_s);
    EXPECT_EQ(commandLine.value(u"sport"_s), u"soccer"_s);
    for (qint64 round = 0; round < 50; ++round) { // values of one length, faster than the file system's clock
        window.set(u"sport"_s, round % 2 == 0 ? u"soccer"_s : u"hockey"_s);
        window.set(u"round"_s, 1000 + round);
        EXPECT_EQ(commandLine.value(u"round"_s), QVariant(1000 + round));
    }
    commandLine.set(u"autoMode"_s, true);
    window.remove(u"sport"_s);
    EXPECT_EQ(afterRestart(u"autoMode"_s), true);
    EXPECT_EQ(afterRestart(u"round"_s), QVariant(qint64(1049)));
    EXPECT_FALSE(commandLine.exists(u"sport"_s));
}

TEST_F(JsonDefaultsStoreTest, AnEditInPlaceIsSeen) {
    JsonDefaultsStore store(path, log);
    store.set(u"sport"_s, u"soccer"_s);
    writeFile(R"({"sport": {"text": "baseball"}, "later": {"bool": true}})");
    EXPECT_EQ(store.value(u"sport"_s), u"baseball"_s);
    store.set(u"autoMode"_s, true);
    EXPECT_EQ(afterRestart(u"later"_s), true); // a key that nobody here knows
}

TEST_F(JsonDefaultsStoreTest, ADamagedFileIsSetAsideAndTheStoreGoesOn) {
    const QList<QByteArray> damaged = {
        "",
        "{",
        "[]",
        R"({"sport": {"text": "soccer"}} trailing)",
        "{\"sport\": {\"text\": \"\xff\"}}",
        QByteArray(100'000, '['),
        QByteArray(R"({"long": {"text": ")") + QByteArray(5'000'000, 'x') + R"("}})",
    };
    for (const QByteArray& bytes : damaged) {
        SCOPED_TRACE(bytes.left(60).constData());
        log.lines.clear();
        writeFile(bytes);
        JsonDefaultsStore store(path, log);
        EXPECT_FALSE(store.exists(u"sport"_s));
        const QStringList aside = files(u"*.broken-*"_s);
        ASSERT_EQ(aside.size(), 1);
        EXPECT_EQ(contentsOf(folder.filePath(aside.first())), bytes);
        EXPECT_EQ(
            log.lines,
            QStringList(
                u"[DefaultsStore] The settings in %1 are damaged and start anew; the old file is now %2"_s
                    .arg(path, folder.filePath(aside.first()))));
        store.set(u"sport"_s, u"football"_s);
        EXPECT_EQ(afterRestart(u"sport"_s), u"football"_s);
        QFile::remove(folder.filePath(aside.first()));
    }
}

TEST_F(JsonDefaultsStoreTest, AnEntryThatIsNotUnderstoodIsNoValueAndStays) {
    const QList<QByteArray> entries = {
        R"("soccer")",
        R"(null)",
        R"({"text": 5})",
        R"({"words": "soccer"})",
        R"({"text": "soccer", "bool": true})",
        R"({"integer": 2.5})",
        R"({"integer": 9223372036854775808})",
        R"({"real": "two"})",
        R"({"bool": 1})",
        R"({"data": "?"})",
        R"({"date": "2024-13-26T00:00:00.000Z"})",
        R"({"list": [true]})",
        QByteArray(R"({"list": [)").repeated(100) + QByteArray("]}").repeated(100),
    };
    for (const QByteArray& entry : entries) {
        SCOPED_TRACE(entry.left(60).constData());
        const QByteArray bytes = R"({"sport": )" + entry + R"(, "on": {"bool": true}})";
        writeFile(bytes);
        JsonDefaultsStore store(path, log);
        EXPECT_FALSE(store.exists(u"sport"_s));
        EXPECT_EQ(store.value(u"on"_s), true);
        store.set(u"autoMode"_s, true);
        EXPECT_EQ(QJsonDocument::fromJson(contentsOf(path))[u"sport"_s],
                  QJsonDocument::fromJson(bytes)[u"sport"_s]);
    }
    EXPECT_EQ(log.lines, QStringList());
}

TEST_F(JsonDefaultsStoreTest, AFileSetAsideNeverTakesThePlaceOfAnEarlierOne) {
    for (const QByteArray& bytes : {"first", "second", "third"}) {
        writeFile(bytes);
        constexpr std::array<timespec, 2> sameMoment = {
            {{.tv_sec = 1'700'000'000, .tv_nsec = 0}, {.tv_sec = 1'700'000'000, .tv_nsec = 0}}};
        ASSERT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), sameMoment.data(), 0), 0);
        EXPECT_FALSE(afterRestart(u"sport"_s).isValid());
    }
    const QString name = u"settings.json.broken-20231114T221320.000Z"_s;
    EXPECT_EQ(files(u"*.broken-*"_s), QStringList({name, name + u"-2"_s, name + u"-3"_s}));
    EXPECT_EQ(contentsOf(folder.filePath(name)), "first");
    EXPECT_EQ(contentsOf(folder.filePath(name + u"-3"_s)), "third");
}

TEST_F(JsonDefaultsStoreTest, AFileThatCannotBeReadIsLeftAloneAndSaidOnce) {
    const auto useAndExpect = [this](const QString& reason) {
        log.lines.clear();
        JsonDefaultsStore store(path, log);
        EXPECT_FALSE(store.exists(u"sport"_s));
        store.set(u"sport"_s, u"football"_s);
        store.set(u"autoMode"_s, true);
        EXPECT_EQ(store.value(u"sport"_s), u"football"_s);
        EXPECT_EQ(log.lines,
                  QStringList(u"[DefaultsStore] Could not read %1: %2. Settings are kept in memory "
                              "until the program ends."_s.arg(path, reason)));
        EXPECT_EQ(files(), QStringList(u"settings.json"_s));
    };
    const QByteArray secret = R"({"sport": {"text": "soccer"}})";
    writeFile(secret);
    setMode(path, 0);
    useAndExpect(u"Permission denied"_s);
    setMode(path, 0600);
    EXPECT_EQ(contentsOf(path), secret);

    QFile::remove(path);
    QDir().mkpath(path); // a folder in the file's place
    useAndExpect(u"Is a directory"_s);
}

TEST_F(JsonDefaultsStoreTest, AFailedSaveLeavesTheOldFileAndIsMadeUpForByTheNextOne) {
    struct Obstacle {
        QString reason;
        std::function<void()> begin;
        std::function<void()> end;
    };
    const Obstacle obstacles[] = {
        {u": Permission denied."_s, [this] { setMode(folder.path(), 0500); },
         [this] { setMode(folder.path(), 0700); }},
        {u": File too large."_s, [] { limitFileSize(10); }, [] { limitFileSize(RLIM_INFINITY); }},
    };
    for (const Obstacle& obstacle : obstacles) {
        JsonDefaultsStore store(path, log);
        store.set(u"sport"_s, u"soccer"_s);
        store.set(u"autoMode"_s, true);
        const QByteArray before = contentsOf(path);
        log.lines.clear();
        obstacle.begin();
        store.set(u"sport"_s, u"football"_s);
        store.remove(u"autoMode"_s);
        obstacle.end();
        EXPECT_EQ(log.lines.filter(obstacle.reason + u" The change is kept in memory until"_s).size(), 2)
            << qPrintable(log.lines.join(u'\n'));
        EXPECT_EQ(contentsOf(path), before);
        EXPECT_EQ(files(), QStringList({u"settings.json"_s, u"settings.json.lock"_s}));
        EXPECT_FALSE(store.exists(u"autoMode"_s));
        store.set(u"sport"_s, u"football"_s); // the value that it holds, but the file does not
        EXPECT_EQ(afterRestart(u"sport"_s), u"football"_s);
        EXPECT_FALSE(afterRestart(u"autoMode"_s).isValid());
    }
}

TEST_F(JsonDefaultsStoreTest, AFileThatWouldBeTooLargeToReadIsNotWritten) {
    JsonDefaultsStore store(path, log);
    store.set(u"sport"_s, u"soccer"_s);
    store.set(u"data"_s, QByteArray(4'000'000, 'x'));
    EXPECT_EQ(log.lines.size(), 1);
    EXPECT_EQ(afterRestart(u"sport"_s), u"soccer"_s);
    store.remove(u"data"_s);
    store.set(u"sport"_s, u"football"_s);
    EXPECT_EQ(afterRestart(u"sport"_s), u"football"_s);
}

/// A number that a child process writes and its parent reads.
std::atomic<qint64>& sharedNumber() {
    return *static_cast<std::atomic<qint64>*>(
        ::mmap(nullptr, sizeof(qint64), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
}

TEST_F(JsonDefaultsStoreTest, AKilledProcessLeavesAWholeFileWithAllThatWasAcknowledged) {
    std::mt19937 random(20241026); // NOLINT(bugprone-random-generator-seed): failures should repeat
    std::atomic<qint64>& acknowledged = sharedNumber();
    for (int round = 0; round < 300; ++round) {
        const qint64 start = acknowledged;
        const pid_t child = ::fork();
        if (child == 0) {
            JsonDefaultsStore store(path, log);
            for (;; ++acknowledged) {
                store.set(u"number"_s, acknowledged + 1);
            }
        }
        const qint64 wanted = start + static_cast<qint64>(random() % 4);
        while (acknowledged < wanted && ::waitpid(child, nullptr, WNOHANG) == 0) {
        }
        for (volatile auto spin = random() % 300'000; spin > 0; spin = spin - 1) {
        }
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        const qint64 stored = afterRestart(u"number"_s).toLongLong();
        ASSERT_TRUE(stored == acknowledged || stored == acknowledged + 1)
            << stored << " after " << acknowledged;
        ASSERT_EQ(log.lines, QStringList());
        acknowledged = stored;
    }
    EXPECT_GT(acknowledged, 300);
}

TEST_F(JsonDefaultsStoreTest, TwoProcessesThatWriteAtOnceLoseNothing) {
    constexpr qint64 keys = 150;
    const auto writeKeys = [this](const QString& name) {
        JsonDefaultsStore store(path, log);
        for (qint64 number = 0; number < keys; ++number) {
            store.set(name + QString::number(number), number);
        }
    };
    const pid_t child = ::fork();
    if (child == 0) {
        writeKeys(u"child"_s);
        ::_exit(0);
    }
    writeKeys(u"parent"_s);
    ::waitpid(child, nullptr, 0);

    const JsonDefaultsStore store(path, log);
    for (qint64 number = 0; number < keys; ++number) {
        EXPECT_EQ(store.value(u"child"_s + QString::number(number)), QVariant(number));
        EXPECT_EQ(store.value(u"parent"_s + QString::number(number)), QVariant(number));
    }
    EXPECT_EQ(log.lines, QStringList());
}

} // namespace

} // namespace ostrelle
