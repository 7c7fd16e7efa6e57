// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/FileLock.h"
#include "platform/JsonDefaultsStoreFixture.h"

#include <QDataStream>
#include <QDateTime>
#include <QTimeZone>
#include <chrono>
#include <limits>
#include <memory>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Everything about a value: its type, the type of each element, and the sign of a zero.
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
        std::numeric_limits<qint64>::max(),
        std::numeric_limits<qint64>::min(),
        qint64((1LL << 53) + 1), // no double holds it
        2.0,
        -0.0,
        9.3e18,
        std::numeric_limits<double>::denorm_min(),
        -std::numeric_limits<double>::infinity(),
        std::numeric_limits<double>::quiet_NaN(),
        u""_s,
        u"Jos\u00e9 \U0001F3C8 \"quoted\" \\ \n\t\u2028"_s,
        QString(u'\0') + u"after NUL"_s,
        QByteArray(""),
        allBytes,
        QDateTime(QDate(1969, 12, 31), QTime(23, 59, 59, 7), QTimeZone::utc()).toUTC(),
        QVariantList(),
        QVariantList{1.0, qint64(1), u"1"_s, true, QByteArray("1"), QVariantList{2.0}},
    };
    for (const QVariant& value : values) {
        {
            JsonDefaultsStore store(path, log);
            store.set(u"key"_s, value);
            EXPECT_EQ(serialized(store.value(u"key"_s)), serialized(value));
        }
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
    await(store.finished());
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
    await(store.finished());
    setMode(folder.path(), 0500); // so that a write would fail
    store.set(u"price"_s, 2.0);
    store.remove(u"absent"_s);
    await(store.finished());
    setMode(folder.path(), 0700);
    EXPECT_EQ(log.lines, QStringList());
    store.set(u"price"_s, qint64(2));
    await(store.finished());
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
    await(window.finished());
    EXPECT_EQ(commandLine.value(u"sport"_s), u"soccer"_s);
    for (qint64 round = 0; round < 50; ++round) { // equal sizes, faster than the file system's clock
        window.set(u"sport"_s, round % 2 == 0 ? u"soccer"_s : u"hockey"_s);
        window.set(u"round"_s, 1000 + round);
        await(window.finished());
        EXPECT_EQ(commandLine.value(u"round"_s), QVariant(1000 + round));
    }
    commandLine.set(u"autoMode"_s, true);
    window.remove(u"sport"_s);
    await(commandLine.finished());
    await(window.finished());
    EXPECT_EQ(afterRestart(u"autoMode"_s), true);
    EXPECT_EQ(afterRestart(u"round"_s), QVariant(qint64(1049)));
    EXPECT_FALSE(commandLine.exists(u"sport"_s));
}

TEST_F(JsonDefaultsStoreTest, WhatTwoStoresAddAtOnceAddsUp) {
    constexpr int rounds = 1000;
    const QVariantMap amounts = {{u"images"_s, qint64(1)}, {u"dollars"_s, 0.5}};
    const auto day = [](int round) { return round < rounds / 2 ? u"Friday"_s : u"Saturday"_s; };
    JsonDefaultsStore window(path, log);
    JsonDefaultsStore commandLine(path, log);
    for (int round = 0; round < rounds; ++round) {
        for (JsonDefaultsStore* store : {&window, &commandLine}) {
            store->addAll(
                amounts, {.periodKey = u"day"_s, .period = day(round), .amounts = {{u"today"_s, qint64(2)}}});
        }
        if (round % 100 == 99) { // some adds follow the other's save, most come during one
            await(window.finished());
            await(commandLine.finished());
        }
    }
    await(window.finished());
    await(commandLine.finished());
    EXPECT_EQ(window.value(u"images"_s), QVariant(qint64(2 * rounds)));
    EXPECT_EQ(commandLine.value(u"dollars"_s), QVariant(double(rounds)));
    EXPECT_EQ(commandLine.value(u"today"_s), QVariant(qint64(2 * rounds)))
        << "two from each store in half of the rounds";
}

TEST_F(JsonDefaultsStoreTest, WhatIsAddedIsThereAtOnceAndAddedOnceWhateverComesBetween) {
    JsonDefaultsStore store(path, log);
    const auto number = [&store] { return store.value(u"number"_s).toLongLong(); };
    const QVariantMap one = {{u"number"_s, qint64(1)}};
    setMode(folder.path(), 0500); // nothing can be saved
    store.add(one);
    await(store.finished());
    store.add(one);
    EXPECT_EQ(number(), 2);
    store.set(u"number"_s, qint64(10));
    store.add(one);
    EXPECT_EQ(number(), 11);
    await(store.finished());
    setMode(folder.path(), 0700);
    store.add(one);
    EXPECT_EQ(number(), 12);
    await(store.finished());
    EXPECT_EQ(afterRestart(u"number"_s), QVariant(qint64(12)));
    store.set(u"number"_s, u"twelve"_s); // not a number: it counts from zero
    store.add(one);
    EXPECT_EQ(number(), 1);
    store.set(u"number"_s, std::numeric_limits<qint64>::max());
    store.add(one);
    EXPECT_EQ(number(), std::numeric_limits<qint64>::max());
}

/// How long the tests try to take the lock that holds up a save.
constexpr std::chrono::seconds patience(2);

TEST_F(JsonDefaultsStoreTest, NobodyWaitsForASaveThatRuns) {
    JsonDefaultsStore store(path, log);
    {
        const FileLock otherProcess(path, patience);
        store.set(u"sport"_s, u"soccer"_s);
        store.set(u"round"_s, qint64(1));
        store.set(u"round"_s, qint64(2));
        store.set(u"autoMode"_s, true);
        store.remove(u"autoMode"_s);
        EXPECT_EQ(store.value(u"sport"_s), u"soccer"_s);
        EXPECT_EQ(store.value(u"round"_s), QVariant(qint64(2)));
        EXPECT_FALSE(store.exists(u"autoMode"_s));
        EXPECT_FALSE(store.saved(u"sport"_s).isReady() || store.saved(u"round"_s).isReady());
        EXPECT_TRUE(await(store.saved(u"ftpPort"_s)));
        EXPECT_EQ(files(), QStringList(u"settings.json.lock"_s));
    }
    EXPECT_TRUE(await(store.saved(u"round"_s)));
    EXPECT_EQ(afterRestart(u"sport"_s), u"soccer"_s);
    EXPECT_EQ(afterRestart(u"round"_s), QVariant(qint64(2)));
    EXPECT_FALSE(afterRestart(u"autoMode"_s).isValid());
    EXPECT_EQ(log.lines, QStringList());
}

TEST_F(JsonDefaultsStoreTest, AStoreThatEndsSavesAllWithoutAnEventLoop) {
    auto store = std::make_unique<JsonDefaultsStore>(path, log);
    auto otherProcess = std::make_unique<FileLock>(path, patience);
    store->set(u"sport"_s, u"soccer"_s);
    store->set(u"sport"_s, u"football"_s);
    QCoro::Task<bool> saved = store->saved(u"sport"_s);
    QCoro::Task<> finished = store->finished();
    otherProcess.reset();
    store.reset();
    EXPECT_EQ(afterRestart(u"sport"_s), u"football"_s);
    EXPECT_TRUE(await(std::move(saved))) << "a waiting task may outlive the store";
    await(std::move(finished));
    EXPECT_EQ(log.lines, QStringList());
}

} // namespace

} // namespace ostrelle
