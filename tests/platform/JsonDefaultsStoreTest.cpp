// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/JsonDefaultsStore.h"

#include "support/RecordingLog.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTimeZone>
#include <array>
#include <cmath>
#include <csignal>
#include <limits>
#include <random>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr uid_t nobody = 65534;

struct stat statusOf(const QString& path) {
    struct stat status{};
    EXPECT_EQ(::stat(QFile::encodeName(path).constData(), &status), 0);
    return status;
}

QByteArray contentsOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

/// Tests run as root in some places, and nothing is read-only for root.
class AsOrdinaryUser {
public:
    AsOrdinaryUser() : m_wasRoot(::geteuid() == 0 && ::seteuid(nobody) == 0) {}
    ~AsOrdinaryUser() {
        if (m_wasRoot) {
            EXPECT_EQ(::seteuid(0), 0);
        }
    }

private:
    bool m_wasRoot;
};

/// Writes beyond so many bytes fail as they do on a full disk.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limited{.rlim_cur = bytes, .rlim_max = m_before.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limited), 0);
        m_signalBefore = std::signal(SIGXFSZ, SIG_IGN);
    }
    ~FullDisk() {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_signalBefore);
    }

private:
    rlimit m_before{};
    void (*m_signalBefore)(int) = nullptr;
};

class JsonDefaultsStoreTest : public testing::Test {
protected:
    JsonDefaultsStoreTest() {
        if (::geteuid() == 0) { // for AsOrdinaryUser
            EXPECT_EQ(::chown(QFile::encodeName(folder.path()).constData(), nobody, nobody), 0);
        }
    }

    void writeFile(const QByteArray& bytes) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    QStringList brokenFiles() const {
        return QDir(folder.path()).entryList({u"settings.json.broken-*"_s}, QDir::Files, QDir::Name);
    }

    QVariant afterRestart(const QString& key) { return JsonDefaultsStore(path, log).value(key); }

    QTemporaryDir folder;
    QString path = folder.filePath(u"settings.json"_s);
    RecordingLog log;
};

bool areSame(const QVariant& a, const QVariant& b) {
    if (a.metaType() != b.metaType()) {
        return false;
    }
    if (a.typeId() == QMetaType::Double) {
        return std::signbit(a.toDouble()) == std::signbit(b.toDouble()) &&
               (a == b || (std::isnan(a.toDouble()) && std::isnan(b.toDouble())));
    }
    if (a.typeId() == QMetaType::QVariantList) {
        return std::ranges::equal(a.toList(), b.toList(), areSame);
    }
    return a == b;
}

TEST_F(JsonDefaultsStoreTest, ValuesSurviveARestartWithTheirTypes) {
    QByteArray allBytes;
    for (int byte = 0; byte < 256; ++byte) {
        allBytes.append(static_cast<char>(byte));
    }
    const QVariantList values = {
        true,
        false,
        qint64(0),
        qint64(21),
        std::numeric_limits<qint64>::max(),
        std::numeric_limits<qint64>::min(),
        qint64((1LL << 53) + 1), // not a double
        2.0,
        -0.0,
        0.1,
        1e300,
        9.3e18,
        std::numeric_limits<double>::denorm_min(),
        std::numeric_limits<double>::infinity(),
        -std::numeric_limits<double>::infinity(),
        std::numeric_limits<double>::quiet_NaN(),
        u""_s,
        u"21"_s,
        u"Jos\u00e9 \U0001F3C8 \"quoted\" \\ \n\t\u2028"_s,
        QString(u'\0') + u"after NUL"_s,
        QByteArray(),
        allBytes,
        QDateTime(QDate(2024, 10, 26), QTime(23, 59, 59, 7), QTimeZone::utc()),
        QDateTime(QDate(1969, 12, 31), QTime(0, 0), QTimeZone::utc()),
        QVariantList(),
        QVariantList{1.0, qint64(1), u"1"_s, true, QByteArray("1"), QVariantList{2.0}},
    };
    for (const QVariant& value : values) {
        JsonDefaultsStore store(path, log);
        store.set(u"key"_s, value);
        EXPECT_TRUE(areSame(store.value(u"key"_s), value)) << contentsOf(path).constData();
        EXPECT_TRUE(areSame(afterRestart(u"key"_s), value)) << contentsOf(path).constData();
    }
    EXPECT_EQ(log.lines, QStringList());
}

TEST_F(JsonDefaultsStoreTest, AMomentOfAnotherZoneIsTheSameMoment) {
    const QDateTime moment(QDate(2024, 3, 1), QTime(20, 0), QTimeZone("America/New_York"));
    JsonDefaultsStore(path, log).set(u"installed"_s, moment);
    EXPECT_EQ(afterRestart(u"installed"_s).toDateTime(), moment);
    EXPECT_EQ(contentsOf(path),
              "{\n    \"installed\": {\n        \"date\": \"2024-03-02T01:00:00.000Z\"\n    }\n}\n");
}

TEST_F(JsonDefaultsStoreTest, ATypedReadTakesNoOtherType) {
    JsonDefaultsStore store(path, log);
    store.set(u"text"_s, u"21"_s);
    store.set(u"integer"_s, qint64(1));
    EXPECT_EQ(store.get<qint64>(u"text"_s), std::nullopt);
    EXPECT_EQ(store.get<double>(u"integer"_s), std::nullopt);
    EXPECT_EQ(store.get<bool>(u"integer"_s), std::nullopt);
    EXPECT_EQ(store.get<qint64>(u"integer"_s), 1);
}

TEST_F(JsonDefaultsStoreTest, TheFileIsSortedAndForItsUserOnly) {
    path = folder.filePath(u"parent/config/settings.json"_s);
    JsonDefaultsStore store(path, log);
    store.set(u"team1Name"_s, u"Lions"_s);
    store.set(u"ftpPort"_s, qint64(21));
    EXPECT_EQ(contentsOf(path), "{\n    \"ftpPort\": {\n        \"integer\": 21\n    },\n"
                                "    \"team1Name\": {\n        \"text\": \"Lions\"\n    }\n}\n");
    EXPECT_EQ(statusOf(path).st_mode & 07777U, 0600U);
    EXPECT_EQ(statusOf(path + u".lock"_s).st_mode & 07777U, 0600U);
    EXPECT_EQ(statusOf(folder.filePath(u"parent/config"_s)).st_mode & 07777U, 0700U);

    ::chmod(QFile::encodeName(path).constData(), 0644); // as an editor or a restored backup leaves it
    EXPECT_EQ(afterRestart(u"ftpPort"_s), QVariant(qint64(21)));
    EXPECT_EQ(statusOf(path).st_mode & 07777U, 0600U);
}

TEST_F(JsonDefaultsStoreTest, ReadingMakesNoFile) {
    EXPECT_FALSE(JsonDefaultsStore(path, log).exists(u"sport"_s));
    JsonDefaultsStore(path, log).remove(u"sport"_s);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
              QStringList());
}

TEST_F(JsonDefaultsStoreTest, RemovedKeysAreGone) {
    JsonDefaultsStore store(path, log);
    store.set(u"sport"_s, u"soccer"_s);
    store.set(u"autoMode"_s, true);
    store.remove(u"sport"_s);
    EXPECT_FALSE(store.exists(u"sport"_s));
    EXPECT_FALSE(afterRestart(u"sport"_s).isValid());
    EXPECT_TRUE(afterRestart(u"autoMode"_s).toBool());
}

TEST_F(JsonDefaultsStoreTest, AValueThatIsHeldIsNotWrittenAgain) {
    JsonDefaultsStore store(path, log);
    store.set(u"price"_s, 2.0);
    const ino_t written = statusOf(path).st_ino; // a write replaces the file
    store.set(u"price"_s, 2.0);
    store.remove(u"absent"_s);
    EXPECT_EQ(statusOf(path).st_ino, written);
    store.set(u"price"_s, qint64(2));
    EXPECT_NE(statusOf(path).st_ino, written);
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
        "null",
        "not JSON at all",
        R"({"sport": "soccer"})",
        R"({"sport": {}})",
        R"({"sport": null})",
        R"({"sport": {"text": 5}})",
        R"({"sport": {"words": "soccer"}})",
        R"({"sport": {"text": "soccer", "bool": true}})",
        R"({"sport": {"text": "soccer"})",
        R"({"sport": {"text": "soccer"}} trailing)",
        "{\"sport\": {\"text\": \"\xff\"}}",
        R"({"port": {"integer": 2.5}})",
        R"({"port": {"integer": "21"}})",
        R"({"port": {"integer": 9223372036854775808}})",
        R"({"price": {"real": "two"}})",
        R"({"on": {"bool": 1}})",
        R"({"data": {"data": "?"}})",
        R"({"date": {"date": "2024-10-26"}})",
        R"({"date": {"date": "2024-13-26T00:00:00.000Z"}})",
        R"({"list": {"list": {"bool": true}}})",
        R"({"list": {"list": [true]}})",
        QByteArray(R"({"list": )") + QByteArray(R"({"list": [)").repeated(100) +
            QByteArray("]}").repeated(100) + "}",
        QByteArray(100'000, '['),
        QByteArray(R"({"long": {"text": ")") + QByteArray(5'000'000, 'x') + R"("}})",
    };
    for (const QByteArray& bytes : damaged) {
        SCOPED_TRACE(bytes.left(60).constData());
        log.lines.clear();
        writeFile(bytes);
        JsonDefaultsStore store(path, log);
        EXPECT_FALSE(store.exists(u"sport"_s));
        const QStringList aside = brokenFiles();
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

TEST_F(JsonDefaultsStoreTest, AFileSetAsideNeverTakesThePlaceOfAnEarlierOne) {
    for (const QByteArray& bytes : {"first", "second", "third"}) {
        writeFile(bytes);
        constexpr std::array<timespec, 2> sameMoment = {
            {{.tv_sec = 1'700'000'000, .tv_nsec = 0}, {.tv_sec = 1'700'000'000, .tv_nsec = 0}}};
        ASSERT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), sameMoment.data(), 0), 0);
        EXPECT_FALSE(afterRestart(u"sport"_s).isValid());
    }
    const QString name = u"settings.json.broken-20231114T221320.000Z"_s;
    EXPECT_EQ(brokenFiles(), QStringList({name, name + u"-2"_s, name + u"-3"_s}));
    EXPECT_EQ(contentsOf(folder.filePath(name)), "first");
    EXPECT_EQ(contentsOf(folder.filePath(name + u"-3"_s)), "third");
}

TEST_F(JsonDefaultsStoreTest, AFileThatCannotBeReadIsLeftAloneAndSaidOnce) {
    const QByteArray secret = R"({"sport": {"text": "soccer"}})";
    writeFile(secret);
    ::chmod(QFile::encodeName(path).constData(), 0);
    {
        const AsOrdinaryUser user;
        JsonDefaultsStore store(path, log);
        EXPECT_FALSE(store.exists(u"sport"_s));
        store.set(u"sport"_s, u"football"_s);
        store.set(u"autoMode"_s, true);
        EXPECT_EQ(store.value(u"sport"_s), u"football"_s);
    }
    EXPECT_EQ(
        log.lines,
        QStringList(u"[DefaultsStore] Could not read %1: Permission denied. Settings are kept in memory "
                    "until the program ends."_s.arg(path)));
    EXPECT_EQ(contentsOf(path), secret);
}

TEST_F(JsonDefaultsStoreTest, AFolderInTheFilesPlaceIsLeftAlone) {
    QDir().mkpath(path);
    JsonDefaultsStore store(path, log);
    store.set(u"sport"_s, u"football"_s);
    EXPECT_EQ(store.value(u"sport"_s), u"football"_s);
    EXPECT_EQ(log.lines.size(), 1);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
              QStringList(u"settings.json"_s));
}

TEST_F(JsonDefaultsStoreTest, AFailedSaveIsLoggedAndMadeUpForByTheNextOne) {
    JsonDefaultsStore store(path, log);
    store.set(u"sport"_s, u"soccer"_s);
    {
        const AsOrdinaryUser user;
        ::chmod(QFile::encodeName(folder.path()).constData(), 0500);
        store.set(u"sport"_s, u"football"_s);
        ::chmod(QFile::encodeName(folder.path()).constData(), 0700);
    }
    ASSERT_EQ(log.lines.size(), 1);
    EXPECT_TRUE(log.lines.first().startsWith("[DefaultsStore] Could not "_L1))
        << qPrintable(log.lines.first());
    EXPECT_EQ(store.value(u"sport"_s), u"football"_s);
    EXPECT_EQ(afterRestart(u"sport"_s), u"soccer"_s);
    store.set(u"sport"_s, u"football"_s); // the value that it holds, but the file does not
    EXPECT_EQ(afterRestart(u"sport"_s), u"football"_s);
}

TEST_F(JsonDefaultsStoreTest, AFullDiskLeavesTheOldFile) {
    JsonDefaultsStore store(path, log);
    store.set(u"sport"_s, u"soccer"_s);
    store.set(u"autoMode"_s, true);
    const QByteArray before = contentsOf(path);
    {
        const FullDisk disk(10);
        store.set(u"sport"_s, u"football"_s);
        store.remove(u"autoMode"_s);
        EXPECT_EQ(contentsOf(path), before);
        EXPECT_FALSE(store.exists(u"autoMode"_s));
    }
    EXPECT_EQ(
        log.lines,
        QStringList(2, u"[DefaultsStore] Could not write %1: File too large. The change is kept in memory "
                       "until a later one can be saved."_s.arg(path)));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name),
              QStringList({u"settings.json"_s, u"settings.json.lock"_s}));
    store.set(u"team1Name"_s, u"Lions"_s);
    EXPECT_EQ(afterRestart(u"sport"_s), u"football"_s);
    EXPECT_EQ(afterRestart(u"team1Name"_s), u"Lions"_s);
    EXPECT_FALSE(afterRestart(u"autoMode"_s).isValid());
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

/// A child process that runs the function with the write end of a pipe.
struct Child {
    template <typename Function>
    explicit Child(Function function) {
        std::array<int, 2> ends{};
        EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
        process = ::fork();
        if (process == 0) {
            ::close(ends[0]);
            function(ends[1]);
            ::_exit(0);
        }
        ::close(ends[1]);
        output = ends[0];
    }
    ~Child() { ::close(output); }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// The next number that the child has written; nothing when it has ended.
    std::optional<qint64> read() const {
        qint64 number = 0;
        return ::read(output, &number, sizeof number) == sizeof number ? std::optional(number) : std::nullopt;
    }
    bool endsWell() const {
        int status = 0;
        return ::waitpid(process, &status, 0) == process && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

    pid_t process = -1;
    int output = -1;
};

void writeNumber(int descriptor, qint64 number) {
    [[maybe_unused]] const ssize_t written = ::write(descriptor, &number, sizeof number);
}

TEST_F(JsonDefaultsStoreTest, AKilledProcessLeavesAWholeFileWithAllThatWasAcknowledged) {
    std::mt19937 random(20241026); // NOLINT(bugprone-random-generator-seed): failures should repeat
    qint64 last = 0;
    for (int round = 0; round < 300; ++round) {
        const Child child([this, last](int acknowledgements) {
            JsonDefaultsStore store(path, log);
            for (qint64 number = last + 1;; ++number) {
                store.set(u"number"_s, number);
                writeNumber(acknowledgements, number);
            }
        });
        for (auto wanted = random() % 4; wanted > 0; --wanted) {
            last = child.read().value_or(-1);
        }
        for (volatile auto spin = random() % 300'000; spin > 0; spin = spin - 1) {
        }
        ::kill(child.process, SIGKILL);
        ::waitpid(child.process, nullptr, 0);
        while (const std::optional<qint64> acknowledged = child.read()) {
            last = *acknowledged;
        }
        const qint64 stored = afterRestart(u"number"_s).toLongLong();
        ASSERT_TRUE(stored == last || stored == last + 1) << stored << " after " << last;
        ASSERT_EQ(log.lines, QStringList());
        last = stored;
    }
    EXPECT_GT(last, 300);
}

TEST_F(JsonDefaultsStoreTest, TwoProcessesThatWriteAtOnceLoseNothing) {
    constexpr int keys = 150;
    const auto writeKeys = [this](const QString& name) {
        JsonDefaultsStore store(path, log);
        for (int number = 0; number < keys; ++number) {
            store.set(name + QString::number(number), qint64(number));
        }
    };
    const Child child([&writeKeys](int ready) {
        writeNumber(ready, 1);
        writeKeys(u"child"_s);
    });
    EXPECT_EQ(child.read(), 1);
    writeKeys(u"parent"_s);
    EXPECT_TRUE(child.endsWell());

    const JsonDefaultsStore store(path, log);
    for (int number = 0; number < keys; ++number) {
        EXPECT_EQ(store.value(u"child"_s + QString::number(number)), QVariant(qint64(number)));
        EXPECT_EQ(store.value(u"parent"_s + QString::number(number)), QVariant(qint64(number)));
    }
    EXPECT_EQ(log.lines, QStringList());
}

} // namespace

} // namespace ostrelle
