// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/PromptServiceFixture.h"
#include "support/FullDisk.h"

namespace ostrelle {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::Contains;

class PromptCacheTest : public PromptServiceTest {};

TEST_F(PromptCacheTest, AnEntryIsUsedForAnHour) {
    struct Row {
        std::chrono::milliseconds age;
        bool isUsed;
    };
    const CountingServer server;
    const auto service = serviceAt(server.url());
    for (const Row& row : {Row{0s, true}, Row{3599s, true}, Row{3600s, true}, Row{3600s + 1ms, false},
                           Row{3601s, false}, Row{24h, false}, Row{-10min, true}, Row{-2h, false}}) {
        await(service->fetchPrompts(query(), PromptService::Fetch::always));
        const int before = server.requests();
        const QDateTime start = clock.now();
        clock.setNow(start.addMSecs(row.age.count()));
        EXPECT_EQ(service->cacheCounts().expired, row.isUsed ? 0 : 1) << row.age.count();
        const PromptTemplates templates = await(service->fetchPrompts(query()));
        EXPECT_EQ(server.requests() - before, row.isUsed ? 0 : 1) << row.age.count();
        EXPECT_EQ(templates, templatesNumber(server.requests()));
        clock.setNow(start);
    }
}

TEST_F(PromptCacheTest, EachChoiceHasAnEntryOfItsOwn) {
    const CountingServer server;
    const auto service = serviceAt(server.url());
    QList<PromptQuery> queries(7, query());
    queries[1].style = CaptionStyle::gettySports;
    queries[2].sport = Sport::soccer;
    queries[3].fallback = FallbackBehavior::omitCaption;
    queries[4].includeOffenseDefense = false;
    queries[5].prioritizeAudioFiles = true;
    queries[6].style = CaptionStyle::imagnImages;
    for (int round = 0; round < 2; ++round) {
        for (qsizetype index = 0; index < queries.size(); ++index) {
            EXPECT_EQ(await(service->fetchPrompts(queries[index])),
                      templatesNumber(static_cast<int>(index) + 1));
        }
    }
    EXPECT_EQ(service->cacheCounts().cached, queries.size());
}

TEST_F(PromptCacheTest, AForcedFetchThatFailsLeavesTheEntry) {
    CannedServer server;
    server.say("200 OK", goodReply());
    const auto service = serviceAt(server.url());
    await(service->fetchPrompts(query()));
    server.say("503 Busy", "later");
    const PromptError error =
        failureOf<PromptError>(service->fetchPrompts(query(), PromptService::Fetch::always));
    EXPECT_EQ(error.localizedDescription(), u"Server error: HTTP 503: later"_s);
    EXPECT_THAT(log.lines, Contains(u"[PromptService] ℹ️ Force refresh requested, skipping cache"_s));
    EXPECT_EQ(await(service->fetchPrompts(query())), templatesNumber(1));
    EXPECT_EQ(server.heads.size(), 2);

    clock.advance(3601s); // an expired entry is not used as a fallback
    EXPECT_EQ(failureOf<PromptError>(service->fetchPrompts(query())).kind(), PromptError::Case::serverError);
}

TEST_F(PromptCacheTest, TwoFetchesOfOneKeyBothAskAndTheLaterAnswerIsKept) {
    CannedServer server;
    const auto service = serviceAt(server.url());
    auto first = service->fetchPrompts(query());
    waitUntil([&] { return server.heads.size() == 1; });
    server.say("200 OK", goodReply(2));
    EXPECT_EQ(await(service->fetchPrompts(query())), templatesNumber(2));
    server.say("200 OK", goodReply(1));
    server.answerRequest(0);
    EXPECT_EQ(await(std::move(first)), templatesNumber(1));
    EXPECT_EQ(await(service->fetchPrompts(query())), templatesNumber(1));
    EXPECT_EQ(service->cacheCounts().cached, 1);
    EXPECT_EQ(server.heads.size(), 2);
}

TEST_F(PromptCacheTest, TheCacheIsClearedInMemoryAndOnDisk) {
    const CountingServer server;
    {
        const auto service = serviceAt(server.url());
        await(service->fetchPrompts(query()));
        await(service->finishPending());
    }
    const auto service = serviceAt(server.url());
    service->clearCache(); // before the file is read
    EXPECT_EQ(await(service->fetchPrompts(query())), templatesNumber(2));
    await(service->finishPending());
    EXPECT_EQ(log.count(u"[PromptService] Cache cleared"_s), 1);

    clock.advance(30min);
    await(service->fetchPrompts({.sport = Sport::soccer}));
    clock.advance(31min);
    EXPECT_EQ(service->cacheCounts().cached, 2);
    EXPECT_EQ(service->cacheCounts().expired, 1);
    service->clearExpiredCache();
    EXPECT_EQ(service->cacheCounts().cached, 1);
    await(service->finishPending());
    EXPECT_EQ(QJsonDocument::fromJson(contentsOf(cacheFile())).object().keys(),
              QStringList(u"v1-apSports-soccer-attemptCaption-false-false"_s));
    service->clearCache();
    await(service->finishPending());
    EXPECT_EQ(contentsOf(cacheFile()), "{}");
    EXPECT_EQ(log.lines.last(), u"[PromptService] Cache cleared"_s);
}

TEST_F(PromptCacheTest, TheNextRunFindsTheEntriesOnDisk) {
    const CountingServer server;
    const auto service = serviceAt(server.url());
    await(service->fetchPrompts(query()));
    await(service->finishPending());
    const QJsonObject entry{{u"templates"_s, toJson(templatesNumber(1))},
                            {u"fetchedAt"_s, u"2024-10-26T12:00:00Z"_s},
                            {u"cacheKey"_s, apKey}};
    EXPECT_EQ(contentsOf(cacheFile()),
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
    EXPECT_EQ(contentsOf(cacheFile()), "{}");
    EXPECT_EQ(server.requests(), 1);
}

TEST_F(PromptCacheTest, AFileThatIsNoCacheIsReportedAndReplacedByTheNextSave) {
    const QByteArray good = "{\"" + apKey.toUtf8() + R"(":{"templates":)" + json(templatesNumber(9)) +
                            R"(,"fetchedAt":"2024-10-26T11:59:00Z","cacheKey":"k"}})";
    const QList<QByteArray> files = {
        "",
        good.first(good.size() / 2), // left by a killed process
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
        EXPECT_EQ(log.count(u"[PromptService] Failed to load cache from disk: "_s), 1);
        EXPECT_EQ(service->cacheCounts().cached, 0) << file.left(80).toStdString();
        EXPECT_EQ(contentsOf(cacheFile()), file);
        EXPECT_EQ(await(service->fetchPrompts(query())), templatesNumber(1));
        await(service->finishPending());
        EXPECT_TRUE(contentsOf(cacheFile()).contains(apKey.toUtf8()));
    }
    putCacheFile(good);
    const auto service = serviceAt(server.url());
    EXPECT_EQ(await(service->fetchPrompts(query())), templatesNumber(9));
}

TEST_F(PromptCacheTest, AFullDiskLeavesTheOldFileAndTheCacheGoesOn) {
    const CountingServer server;
    const auto service = serviceAt(server.url());
    await(service->fetchPrompts(query()));
    await(service->finishPending());
    const QByteArray before = contentsOf(cacheFile());
    {
        const FullDisk full(0);
        await(service->fetchPrompts({.sport = Sport::soccer}));
        await(service->finishPending());
    }
    EXPECT_EQ(log.lines.last(),
              u"[PromptService] Failed to save cache to disk: Could not write %1: File too large."_s.arg(
                  cacheFile()));
    EXPECT_EQ(contentsOf(cacheFile()), before);
    EXPECT_EQ(await(service->fetchPrompts({.sport = Sport::soccer})), templatesNumber(2));

    await(service->fetchPrompts({.sport = Sport::baseball}));
    await(service->finishPending());
    EXPECT_EQ(QJsonDocument::fromJson(contentsOf(cacheFile())).object().size(), 3)
        << "the next save makes up for the one that failed";
}

} // namespace ostrelle
