// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DefaultsFile.h"
#include "platform/JsonDefaultsStoreFixture.h"
#include "platform/TaggedJson.h"
#include "support/FullDisk.h"

#include <QJsonDocument>
#include <optional>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

class JsonDefaultsStoreFaultTest : public JsonDefaultsStoreTest {};

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
    const QString moment = u".broken-20231114T221320.000Z"_s;
    QStringList namesAside;
    for (const QByteArray& bytes : damaged) {
        SCOPED_TRACE(bytes.left(60).constData());
        log.lines.clear();
        write(bytes);
        setDate(path, {.tv_sec = 1'700'000'000, .tv_nsec = 0}); // one date, so that the names would clash
        JsonDefaultsStore store(path, log);
        EXPECT_FALSE(store.exists(u"sport"_s));
        const QString number = namesAside.isEmpty() ? QString() : u"-%1"_s.arg(namesAside.size() + 1);
        namesAside.append(u"settings.json"_s + moment + number);
        EXPECT_EQ(files(u"*.broken-*"_s), namesAside) << "none replaces an earlier one";
        EXPECT_EQ(contentsOf(path + moment + number), bytes);
        EXPECT_EQ(
            log.lines,
            QStringList(
                u"[DefaultsStore] The settings in %1 are damaged and start anew; the old file is now %2"_s
                    .arg(path, path + moment + number)));
        store.set(u"sport"_s, u"football"_s);
        await(store.finished());
        EXPECT_EQ(afterRestart(u"sport"_s), u"football"_s);
    }
}

TEST_F(JsonDefaultsStoreFaultTest, AFileThatAnEditorIsJustWritingIsNotSetAside) {
    write(R"({"sport": {"text": "soccer"}})");
    JsonDefaultsStore store(path, log);
    EXPECT_EQ(store.value(u"sport"_s), u"soccer"_s);
    write(R"({"sport": )");
    EXPECT_EQ(store.value(u"sport"_s), u"soccer"_s);
    write(R"({"sport": {"text": "football"}})");
    EXPECT_EQ(store.value(u"sport"_s), u"football"_s);
    EXPECT_EQ(files(u"*.broken-*"_s), QStringList());
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
        write(bytes);
        JsonDefaultsStore store(path, log);
        EXPECT_FALSE(store.exists(u"sport"_s));
        EXPECT_EQ(store.value(u"on"_s), true);
        store.set(u"autoMode"_s, true);
        await(store.finished());
        EXPECT_EQ(QJsonDocument::fromJson(contentsOf(path))[u"sport"_s],
                  QJsonDocument::fromJson(bytes)[u"sport"_s]);
    }
    EXPECT_EQ(log.lines, QStringList());
}

TEST_F(JsonDefaultsStoreFaultTest, AFileThatCannotBeReadIsLeftAloneAndSaidOnce) {
    const QByteArray secret = R"({"sport": {"text": "soccer"}})";
    write(secret);
    setMode(path, 0);
    {
        JsonDefaultsStore store(path, log);
        EXPECT_FALSE(store.exists(u"sport"_s));
        store.set(u"sport"_s, u"football"_s);
        store.set(u"autoMode"_s, true);
        EXPECT_EQ(store.value(u"sport"_s), u"football"_s);
        EXPECT_FALSE(await(store.saved(u"sport"_s)));
        EXPECT_EQ(log.lines,
                  QStringList(u"[DefaultsStore] Could not read %1: Permission denied. Settings are kept in "
                              "memory until it can be."_s.arg(path)));
    }
    setMode(path, 0600);
    EXPECT_EQ(contentsOf(path), secret);
    EXPECT_EQ(files(u"*.broken-*"_s), QStringList());

    JsonDefaultsStore store(path, log);
    setMode(path, 0);
    store.set(u"autoMode"_s, true);
    EXPECT_FALSE(await(store.saved(u"autoMode"_s)));
    setMode(path, 0600); // the fault has passed
    store.saveAgain();
    EXPECT_TRUE(await(store.saved(u"autoMode"_s)));
}

TEST_F(JsonDefaultsStoreFaultTest, AFailedSaveLeavesTheOldFileAndIsMadeUpForByTheNextOne) {
    JsonDefaultsStore store(path, log);
    store.setAll({{u"sport"_s, u"soccer"_s}, {u"autoMode"_s, true}});
    await(store.finished());
    const QByteArray before = contentsOf(path);
    {
        const FullDisk fullDisk(10);
        store.set(u"sport"_s, u"football"_s);
        EXPECT_FALSE(await(store.saved(u"sport"_s)));
        store.remove(u"autoMode"_s);
        EXPECT_FALSE(await(store.saved(u"autoMode"_s)));
    }
    const QString line = u": File too large. The change is kept in memory until"_s;
    EXPECT_EQ(log.lines.filter(line).size(), 2) << qPrintable(log.lines.join(u'\n'));
    EXPECT_EQ(contentsOf(path), before);
    EXPECT_EQ(files(), QStringList({u"settings.json"_s, u"settings.json.lock"_s}));
    EXPECT_FALSE(store.exists(u"autoMode"_s));
    EXPECT_TRUE(await(store.saved(u"ftpPort"_s)));
    store.set(u"sport"_s, u"football"_s); // what memory already holds, but the file does not
    EXPECT_TRUE(await(store.saved(u"sport"_s)) && await(store.saved(u"autoMode"_s)));
    EXPECT_EQ(afterRestart(u"sport"_s), u"football"_s);
    EXPECT_FALSE(afterRestart(u"autoMode"_s).isValid());
}

TEST_F(JsonDefaultsStoreFaultTest, TheEndOfAStoreTriesOnceMoreAndTellsWhatIsLost) {
    for (const bool isRoomAgain : {true, false}) {
        log.lines.clear();
        std::optional<FullDisk> fullDisk(std::in_place, 10);
        {
            JsonDefaultsStore store(path, log);
            store.set(u"roomAgain"_s, isRoomAgain);
            await(store.finished());
            if (isRoomAgain) {
                fullDisk.reset();
            }
        }
        fullDisk.reset();
        EXPECT_EQ(afterRestart(u"roomAgain"_s), true) << "an earlier save is not lost";
        EXPECT_EQ(log.lines.filter(u" What was changed last is lost."_s).size(), isRoomAgain ? 0 : 1);
    }
}

TEST_F(JsonDefaultsStoreFaultTest, AFileThatWouldBeTooLargeToReadIsNotWritten) {
    DefaultsFile file(path);
    file.apply({{u"sport"_s, taggedValue(u"soccer"_s)}});
    EXPECT_THROW(file.apply({{u"data"_s, taggedValue(QByteArray(4'000'000, 'x'))}}), FileError);
    EXPECT_EQ(DefaultsFile(path).load().keys(), QStringList(u"sport"_s));
}

} // namespace

} // namespace ostrelle
