// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/PromptServiceFixture.h"

namespace ostrelle {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::Contains;

class PromptCacheFileTest : public PromptServiceTest {};

TEST_F(PromptCacheFileTest, TheNextRunFindsTheEntriesOnDisk) {
    const CountingServer server;
    const auto service = serviceAt(server.url());
    await(service->fetchPrompts(query()));
    await(service->finishPending());
    const QJsonObject entry{{u"templates"_s, toJson(templatesNumber(1))},
                            {u"fetchedAt"_s, u"2024-10-26T12:00:00Z"_s},
                            {u"cacheKey"_s, apKey}};
    EXPECT_EQ(contentOf(cacheFile()),
              QJsonDocument(QJsonObject{{apKey, entry}}).toJson(QJsonDocument::Compact));

    clock.advance(3600s);
    const auto nextRun = serviceAt(server.url());
    EXPECT_EQ(await(nextRun->fetchPrompts(query())), templatesNumber(1)); // asked before the file is read
    EXPECT_THAT(log.lines, Contains(u"[PromptService] Cache loaded from disk: 1 entries"_s));
    EXPECT_THAT(log.lines, Contains(u"[PromptService] ✅ Using cached prompt for key: "_s + apKey));

    clock.advance(1s);
    const auto lateRun = serviceAt(server.url());
    await(lateRun->finishPending());
    EXPECT_EQ(log.lines.last(), u"[PromptService] Cleared 1 expired cache entries"_s);
    EXPECT_EQ(contentOf(cacheFile()), "{}");
    EXPECT_EQ(server.requests(), 1);
}

TEST_F(PromptCacheFileTest, AFileThatIsNoCacheIsReportedAndReplacedByTheNextSave) {
    const QByteArray good = "{\"" + apKey.toUtf8() + R"(":{"templates":)" +
                            QJsonDocument(toJson(templatesNumber(9))).toJson(QJsonDocument::Compact) +
                            R"(,"fetchedAt":"2024-10-26T11:59:00Z","cacheKey":"k"}})";
    const QList<QByteArray> files = {
        "",
        good.first(good.size() / 2), // of a process that was killed
        "[]",
        "\xff\xff",
        QByteArray(1000000, '{'),
        QByteArray(good).replace("11:59:00Z", "11:59:00.5Z"),
        QByteArray(good).replace("styleRules", "styleRule"),
        QByteArray(good).replace("\"cacheKey\":\"k\"", "\"cacheKey\":null"),
        good.chopped(1) + R"(,"other":3})", // one bad entry spoils them all
    };
    CannedServer server;
    server.say("200 OK", goodReply());
    for (const QByteArray& file : files) {
        log.lines.clear();
        putCacheFile(file);
        const auto service = serviceAt(server.url());
        await(service->finishPending());
        EXPECT_EQ(linesWith(u"[PromptService] Failed to load cache from disk: "_s).size(), 1);
        EXPECT_EQ(service->cacheCounts().cached, 0) << file.left(80).toStdString();
        EXPECT_EQ(contentOf(cacheFile()), file);
        EXPECT_EQ(await(service->fetchPrompts(query())), templatesNumber(1));
        await(service->finishPending());
        EXPECT_TRUE(contentOf(cacheFile()).contains(apKey.toUtf8()));
    }
    putCacheFile(good);
    const auto service = serviceAt(server.url());
    EXPECT_EQ(await(service->fetchPrompts(query())), templatesNumber(9));
}

TEST_F(PromptCacheFileTest, AnEntryOfAnotherCenturyIsNotUsed) {
    for (const QByteArray& date : {QByteArray("9999-12-31T23:59:59Z"), QByteArray("0001-01-01T00:00:00Z")}) {
        putCacheFile("{\"" + apKey.toUtf8() + R"(":{"templates":)" +
                     QJsonDocument(toJson(templatesNumber(9))).toJson() + R"(,"fetchedAt":")" + date +
                     R"(","cacheKey":"k"}})");
        const CountingServer server;
        EXPECT_EQ(await(serviceAt(server.url())->fetchPrompts(query())), templatesNumber(1));
    }
}

TEST_F(PromptCacheFileTest, ACacheThatCannotBeSavedStillServesThisRun) {
    const CountingServer server;
    QFile inTheWay(folder.filePath(u"made"_s)); // a file where the folder should be
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    const auto service = serviceAt(server.url());
    await(service->fetchPrompts(query()));
    await(service->finishPending());
    EXPECT_EQ(linesWith(u"[PromptService] Failed to save cache to disk: "_s).size(), 1);
    EXPECT_EQ(await(service->fetchPrompts(query())), templatesNumber(1));

    inTheWay.remove(); // and when there is room again, all of it is saved
    await(service->fetchPrompts({.sport = Sport::soccer}));
    await(service->finishPending());
    EXPECT_EQ(QJsonDocument::fromJson(contentOf(cacheFile())).object().size(), 2);
}

} // namespace ostrelle
