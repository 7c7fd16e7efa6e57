// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/JsonDefaultsStoreFixture.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QJsonDocument>
#include <array>
#include <atomic>
#include <csignal>
#include <functional>
#include <random>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

class JsonDefaultsStoreFaultTest : public JsonDefaultsStoreTest {};

/// Writes beyond so many bytes of a file fail, much as they do on a full disk.
void limitFileSize(rlim_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    EXPECT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    limit.rlim_cur = std::min(bytes, limit.rlim_max);
    EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
}

TEST_F(JsonDefaultsStoreFaultTest, ADamagedFileIsSetAsideAndTheStoreGoesOn) {
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

TEST_F(JsonDefaultsStoreFaultTest, AnEntryThatIsNotUnderstoodIsNoValueAndStays) {
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

TEST_F(JsonDefaultsStoreFaultTest, AFileSetAsideNeverTakesThePlaceOfAnEarlierOne) {
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

TEST_F(JsonDefaultsStoreFaultTest, AFileThatCannotBeReadIsLeftAloneAndSaidOnce) {
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

TEST_F(JsonDefaultsStoreFaultTest, AFailedSaveLeavesTheOldFileAndIsMadeUpForByTheNextOne) {
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
        EXPECT_FALSE(store.isSaved(u"sport"_s) || store.isSaved(u"autoMode"_s));
        EXPECT_TRUE(store.isSaved(u"ftpPort"_s));
        store.set(u"sport"_s, u"football"_s); // the value that it holds, but the file does not
        EXPECT_TRUE(store.isSaved(u"sport"_s) && store.isSaved(u"autoMode"_s));
        EXPECT_EQ(afterRestart(u"sport"_s), u"football"_s);
        EXPECT_FALSE(afterRestart(u"autoMode"_s).isValid());
    }
}

TEST_F(JsonDefaultsStoreFaultTest, AFileThatWouldBeTooLargeToReadIsNotWritten) {
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

TEST_F(JsonDefaultsStoreFaultTest, AKilledProcessLeavesAWholeFileWithAllThatWasAcknowledged) {
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

TEST_F(JsonDefaultsStoreFaultTest, TwoProcessesThatWriteAtOnceLoseNothing) {
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
