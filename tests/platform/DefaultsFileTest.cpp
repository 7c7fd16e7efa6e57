// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DefaultsFile.h"

#include "platform/JsonDefaultsStoreFixture.h"
#include "platform/TaggedJson.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <random>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

class DefaultsFileTest : public JsonDefaultsStoreTest {
protected:
    void apply(const QString& key, const QVariant& value) const {
        DefaultsFile(path).apply({{key, taggedValue(value)}});
    }
};

TEST_F(DefaultsFileTest, AFileSetAsideNeverTakesThePlaceOfAnEarlierOne) {
    for (const QByteArray& bytes : {"first", "second", "third"}) {
        writeFile(bytes);
        constexpr std::array<timespec, 2> sameMoment = {
            {{.tv_sec = 1'700'000'000, .tv_nsec = 0}, {.tv_sec = 1'700'000'000, .tv_nsec = 0}}};
        ASSERT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), sameMoment.data(), 0), 0);
        DefaultsFile file(path);
        EXPECT_EQ(file.load(), QJsonObject());
        EXPECT_TRUE(file.takeNotice().contains(u" are damaged and start anew; "_s));
    }
    const QString name = u"settings.json.broken-20231114T221320.000Z"_s;
    EXPECT_EQ(files(u"*.broken-*"_s), QStringList({name, name + u"-2"_s, name + u"-3"_s}));
    EXPECT_EQ(contentsOf(folder.filePath(name)), "first");
    EXPECT_EQ(contentsOf(folder.filePath(name + u"-3"_s)), "third");
}

TEST_F(DefaultsFileTest, AFileThatWouldBeTooLargeToReadIsNotWritten) {
    apply(u"sport"_s, u"soccer"_s);
    EXPECT_THROW(apply(u"data"_s, QByteArray(4'000'000, 'x')), FileError);
    EXPECT_EQ(DefaultsFile(path).load().keys(), QStringList(u"sport"_s));
}

/// A number that a child process writes and its parent reads.
std::atomic<qint64>& sharedNumber() {
    return *static_cast<std::atomic<qint64>*>(
        ::mmap(nullptr, sizeof(qint64), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
}

TEST_F(DefaultsFileTest, AKilledProcessLeavesAWholeFileWithAllThatWasAcknowledged) {
    std::mt19937 random(20241026); // NOLINT(bugprone-random-generator-seed): failures should repeat
    std::atomic<qint64>& acknowledged = sharedNumber();
    for (int round = 0; round < 300; ++round) {
        const qint64 start = acknowledged;
        const pid_t child = ::fork();
        if (child == 0) {
            DefaultsFile file(path);
            for (;; ++acknowledged) {
                file.apply({{u"number"_s, taggedValue(qint64(acknowledged + 1))}});
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

TEST_F(DefaultsFileTest, TwoProcessesThatWriteAtOnceLoseNothing) {
    constexpr qint64 keys = 150;
    const auto writeKeys = [this](const QString& name) {
        DefaultsFile file(path);
        for (qint64 number = 0; number < keys; ++number) {
            file.apply({{name + QString::number(number), taggedValue(number)}});
        }
    };
    const pid_t child = ::fork();
    if (child == 0) {
        writeKeys(u"child"_s);
        ::_exit(0);
    }
    writeKeys(u"parent"_s);
    ::waitpid(child, nullptr, 0);

    const QJsonObject values = DefaultsFile(path).load();
    EXPECT_EQ(values.size(), 2 * keys);
    for (qint64 number = 0; number < keys; ++number) {
        EXPECT_EQ(values.value(u"child"_s + QString::number(number)), taggedValue(number));
        EXPECT_EQ(values.value(u"parent"_s + QString::number(number)), taggedValue(number));
    }
}

} // namespace

} // namespace ostrelle
