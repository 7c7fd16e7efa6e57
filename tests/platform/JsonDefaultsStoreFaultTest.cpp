// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/JsonDefaultsStoreFixture.h"
#include "support/FullDisk.h"

#include <QJsonDocument>
#include <functional>
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
        await(store.finished());
        EXPECT_EQ(afterRestart(u"sport"_s), u"football"_s);
        QFile::remove(folder.filePath(aside.first()));
    }
}

TEST_F(JsonDefaultsStoreFaultTest, AFileThatAnEditorIsJustWritingIsNotSetAside) {
    writeFile(R"({"sport": {"text": "soccer"}})");
    JsonDefaultsStore store(path, log);
    EXPECT_EQ(store.value(u"sport"_s), u"soccer"_s);
    writeFile(R"({"sport": )");
    EXPECT_EQ(store.value(u"sport"_s), u"soccer"_s);
    writeFile(R"({"sport": {"text": "football"}})");
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
        writeFile(bytes);
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
    const auto useAndExpect = [this](const QString& reason) {
        log.lines.clear();
        JsonDefaultsStore store(path, log);
        EXPECT_FALSE(store.exists(u"sport"_s));
        store.set(u"sport"_s, u"football"_s);
        store.set(u"autoMode"_s, true);
        EXPECT_EQ(store.value(u"sport"_s), u"football"_s);
        EXPECT_FALSE(await(store.saved(u"sport"_s)));
        EXPECT_EQ(log.lines,
                  QStringList(u"[DefaultsStore] Could not read %1: %2. Settings are kept in memory "
                              "until it can be."_s.arg(path, reason)));
        EXPECT_EQ(files(u"*.broken-*"_s), QStringList());
    };
    const QByteArray secret = R"({"sport": {"text": "soccer"}})";
    writeFile(secret);
    setMode(path, 0);
    useAndExpect(u"Permission denied"_s);
    setMode(path, 0600);
    EXPECT_EQ(contentsOf(path), secret);
    {
        JsonDefaultsStore store(path, log);
        setMode(path, 0);
        store.set(u"autoMode"_s, true);
        EXPECT_FALSE(await(store.saved(u"autoMode"_s)));
        setMode(path, 0600); // it was a passing trouble
        store.saveAgain();
        EXPECT_TRUE(await(store.saved(u"autoMode"_s)));
    }

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
    std::optional<FullDisk> fullDisk;
    const Obstacle obstacles[] = {
        {u": Permission denied."_s, [this] { setMode(folder.path(), 0500); },
         [this] { setMode(folder.path(), 0700); }},
        {u": File too large."_s, [&fullDisk] { fullDisk.emplace(10); }, [&fullDisk] { fullDisk.reset(); }},
    };
    for (const Obstacle& obstacle : obstacles) {
        JsonDefaultsStore store(path, log);
        store.setAll({{u"sport"_s, u"soccer"_s}, {u"autoMode"_s, true}});
        await(store.finished());
        const QByteArray before = contentsOf(path);
        log.lines.clear();
        obstacle.begin();
        store.set(u"sport"_s, u"football"_s);
        EXPECT_FALSE(await(store.saved(u"sport"_s)));
        store.remove(u"autoMode"_s);
        EXPECT_FALSE(await(store.saved(u"autoMode"_s)));
        obstacle.end();
        EXPECT_EQ(log.lines.filter(obstacle.reason + u" The change is kept in memory until"_s).size(), 2)
            << qPrintable(log.lines.join(u'\n'));
        EXPECT_EQ(contentsOf(path), before);
        EXPECT_EQ(files(), QStringList({u"settings.json"_s, u"settings.json.lock"_s}));
        EXPECT_FALSE(store.exists(u"autoMode"_s));
        EXPECT_TRUE(await(store.saved(u"ftpPort"_s)));
        store.set(u"sport"_s, u"football"_s); // the value that it holds, but the file does not
        EXPECT_TRUE(await(store.saved(u"sport"_s)) && await(store.saved(u"autoMode"_s)));
        EXPECT_EQ(afterRestart(u"sport"_s), u"football"_s);
        EXPECT_FALSE(afterRestart(u"autoMode"_s).isValid());
    }
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
        EXPECT_EQ(afterRestart(u"roomAgain"_s), true) << "what was saved before is not lost";
        EXPECT_EQ(log.lines.filter(u" What was changed last is lost."_s).size(), isRoomAgain ? 0 : 1);
    }
}

} // namespace

} // namespace ostrelle
