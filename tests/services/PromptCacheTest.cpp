// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/PromptServiceFixture.h"

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
    const PromptQuery first = query();
    QList<PromptQuery> queries(7, first);
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
    const PromptError error = failureOf(service->fetchPrompts(query(), PromptService::Fetch::always));
    EXPECT_EQ(error.localizedDescription(), u"Server error: HTTP 503: later"_s);
    EXPECT_THAT(log.lines, Contains(u"[PromptService] ℹ️ Force refresh requested, skipping cache"_s));
    EXPECT_EQ(await(service->fetchPrompts(query())), templatesNumber(1));
    EXPECT_EQ(server.heads.size(), 2);

    clock.advance(3601s); // an expired one is no help in need either
    EXPECT_EQ(failureOf(service->fetchPrompts(query())).kind(), PromptError::Case::serverError);
}

TEST_F(PromptCacheTest, TwoFetchesOfOneKeyBothAskAndTheLaterIsKept) {
    const CountingServer server;
    const auto service = serviceAt(server.url());
    auto first = service->fetchPrompts(query());
    auto second = service->fetchPrompts(query());
    const PromptTemplates one = await(std::move(first));
    const PromptTemplates two = await(std::move(second));
    EXPECT_EQ(server.requests(), 2);
    EXPECT_NE(one, two);
    const PromptTemplates kept = await(service->fetchPrompts(query()));
    EXPECT_TRUE(kept == one || kept == two);
    EXPECT_EQ(service->cacheCounts().cached, 1);
    await(service->finishPending());
    EXPECT_EQ(linesWith(u"Cache saved to disk"_s).size(), 2);
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
    EXPECT_EQ(linesWith(u"[PromptService] Cache cleared"_s).size(), 1);

    clock.advance(30min);
    await(service->fetchPrompts({.sport = Sport::soccer}));
    clock.advance(31min);
    EXPECT_EQ(service->cacheCounts().cached, 2);
    EXPECT_EQ(service->cacheCounts().expired, 1);
    service->clearExpiredCache();
    EXPECT_EQ(service->cacheCounts().cached, 1);
    await(service->finishPending());
    EXPECT_EQ(QJsonDocument::fromJson(contentOf(cacheFile())).object().keys(),
              QStringList(u"v1-apSports-soccer-attemptCaption-false-false"_s));
    service->clearCache();
    await(service->finishPending());
    EXPECT_EQ(contentOf(cacheFile()), "{}");
    EXPECT_EQ(log.lines.last(), u"[PromptService] Cache cleared"_s);
}

} // namespace ostrelle
