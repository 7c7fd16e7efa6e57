// SPDX-License-Identifier: GPL-3.0-or-later
#include "product/ServiceEndpoints.h"
#include "services/PromptServiceFixture.h"

namespace ostrelle {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

TEST_F(PromptServiceTest, AFetchIsLoggedStepByStep) {
    const CountingServer server;
    const auto service = serviceAt(server.url());
    await(service->finishPending());
    EXPECT_THAT(log.lines, ElementsAre(u"[PromptService] No cache file found on disk"_s));
    log.lines.clear();

    EXPECT_EQ(await(service->fetchPrompts(query())), templatesNumber(1));

    const QString url = server.url().toString() +
                        u"/api/prompt?style=apSports&sport=football&fallbackBehavior=attemptCaption"
                        "&includeOffenseDefense=true&prioritizeAudioFiles=false&version=v1"_s;
    EXPECT_THAT(
        log.lines,
        ElementsAre(u"[PromptService] ----------------------------------------"_s,
                    u"[PromptService] Fetching prompts for:"_s, u"[PromptService]   style: apSports"_s,
                    u"[PromptService]   sport: football"_s,
                    u"[PromptService]   fallbackBehavior: attemptCaption"_s,
                    u"[PromptService]   includeOffenseDefense: true"_s,
                    u"[PromptService]   prioritizeAudioFiles: false"_s, u"[PromptService]   version: v1"_s,
                    u"[PromptService] ℹ️ No valid cache found for key: "_s + apKey,
                    u"[PromptService] 🌐 Fetching fresh prompt from server..."_s,
                    u"[PromptService] 🌐 Request URL: "_s + url,
                    u"[PromptService] 🔑 API Key: pk-0123456... (length: 21)"_s,
                    u"[PromptService] 📡 Sending request..."_s, u"[PromptService] 📨 Response: HTTP 200"_s,
                    testing::_, u"[PromptService] ✅ Successfully decoded response"_s,
                    u"[PromptService] ✅ Successfully fetched templates from server"_s,
                    u"[PromptService]   Common rules: 12 characters"_s,
                    u"[PromptService]   Sport instructions: 11 characters"_s,
                    u"[PromptService]   Style rules: 11 characters"_s));
}

TEST_F(PromptServiceTest, TheRequestHasItsHeadersAndQueryInOrder) {
    CannedServer server;
    server.say("200 OK", goodReply());
    const auto service = serviceAt(server.url());
    await(service->fetchPrompts({.style = CaptionStyle::simple,
                                 .sport = Sport::trackAndField,
                                 .fallback = FallbackBehavior::omitCaption,
                                 .prioritizeAudioFiles = true,
                                 .version = u"a b&c+%"_s}));
    ASSERT_EQ(server.heads.size(), 1);
    EXPECT_TRUE(server.heads[0].startsWith(
        "GET /api/prompt?style=simple&sport=trackAndField&fallbackBehavior=omitCaption"
        "&includeOffenseDefense=false&prioritizeAudioFiles=true&version=a%20b%26c%2B%25 HTTP/1.1\r\n"))
        << server.heads[0].toStdString();
    EXPECT_TRUE(server.heads[0].toLower().contains("x-api-key: " + promptKey.toUtf8() + "\r\n"));
    EXPECT_TRUE(server.heads[0].toLower().contains("accept: application/json\r\n"));
}

TEST_F(PromptServiceTest, AReplyThatIsNotAsPromisedIsAnErrorAndIsNotStored) {
    struct Row {
        QByteArray status;
        QByteArray body;
        PromptError::Case kind;
        QString words; ///< in the description
        QString line;
    };
    using Case = PromptError::Case;
    const auto without = [](const QByteArray& field) {
        return goodReply().replace('"' + field + '"', '"' + field + "X\"");
    };
    const QString undecodable = u"Failed to decode response: "_s;
    const QList<Row> rows = {
        {"401 No", "", Case::unauthorized, u"Unauthorized - API key invalid"_s,
         u"❌ Unauthorized - API key rejected"_s},
        {"201 Created", goodReply(), Case::serverError, u"Server error: HTTP 201: {"_s,
         u"❌ Server error HTTP 201: {"_s},
        {"302 Found", "", Case::serverError, u"HTTP 302: "_s, u"📨 Response: HTTP 302"_s},
        {"500 Oh", "\xff\xfe", Case::serverError, u"HTTP 500: Unknown error"_s,
         u"❌ Server error HTTP 500: Unknown error"_s},
        {"200 OK", "", Case::decodingError, undecodable, u"📦 Data size: 0 bytes"_s},
        {"200 OK", "[]", Case::decodingError, u"This is not an object."_s, u"Response body: []"_s},
        {"200 OK", "\xff", Case::decodingError, undecodable, u"Response body: <non-utf8>"_s},
        {"200 OK", QByteArray(100000, '['), Case::decodingError, undecodable,
         u"Response body: "_s + QString(500, u'[')},
        {"200 OK", without("offenseDefenseInstructions"), Case::decodingError,
         u"\"templates.offenseDefenseInstructions\" is missing"_s, u"❌ Decoding error: "_s},
        {"200 OK", without("version"), Case::decodingError, u"\"version\""_s, u"❌ Decoding error: "_s},
        {"200 OK", without("cacheKey"), Case::decodingError, u"\"metadata.cacheKey\""_s,
         u"❌ Decoding error: "_s},
    };
    CannedServer server;
    const auto service = serviceAt(server.url());
    for (const Row& row : rows) {
        log.lines.clear();
        server.say(row.status, row.body);
        const PromptError error = failureOf<PromptError>(service->fetchPrompts(query()));
        EXPECT_EQ(error.kind(), row.kind) << row.status.toStdString() << row.body.left(80).toStdString();
        EXPECT_TRUE(error.localizedDescription().contains(row.words)) << error.what();
        EXPECT_FALSE(log.lines.filter(u"[PromptService] "_s + row.line).isEmpty()) << row.line.toStdString();
        EXPECT_THAT(log.lines,
                    Contains(u"[PromptService] ❌ PromptError: "_s + error.localizedDescription()));
        EXPECT_EQ(log.lines.last(),
                  u"[PromptService]   Error description: "_s + error.localizedDescription());
    }
    EXPECT_EQ(service->cacheCounts().cached, 0);
}

TEST_F(PromptServiceTest, WhereThereIsNoServerThereIsAnError) {
    for (const QString& base :
         {u""_s, u"ftp://example.invalid"_s, u"http://"_s, u"prompts.example.invalid"_s}) {
        const auto service = serviceAt(QUrl(base));
        EXPECT_EQ(failureOf<PromptError>(service->fetchPrompts(query())).kind(),
                  PromptError::Case::invalidURL)
            << base.toStdString();
        EXPECT_THAT(log.lines, Contains(u"[PromptService] ❌ Failed to build URL from base: "_s +
                                        QUrl(base).toString()));
    }
}

TEST_F(PromptServiceTest, AServerHasThirtySeconds) {
    CannedServer silent;
    const auto service = serviceAt(silent.url());
    QCoro::Task<PromptTemplates> fetch = service->fetchPrompts(query());
    waitUntil([&] { return silent.heads.size() == 1; });
    clock.advance(30s - 1ms);
    EXPECT_FALSE(fetch.isReady());
    clock.advance(1ms);
    const auto error = failureOf<PromptError>(std::move(fetch));
    EXPECT_EQ(error.kind(), PromptError::Case::networkError);
    EXPECT_EQ(error.localizedDescription(), u"Network error: The request timed out."_s);
    EXPECT_THAT(log.lines, Contains(u"[PromptService] ❌ Network error: The request timed out."_s));
}

TEST_F(PromptServiceTest, AServiceThatGoesFailsItsFetchesInSilence) {
    CannedServer silent;
    auto service = serviceAt(silent.url());
    auto beforeTheFile = service->fetchPrompts(query());
    auto another = serviceAt(silent.url());
    auto inFlight = another->fetchPrompts(query());
    waitUntil([&] { return silent.heads.size() == 2; });
    auto third = serviceAt(silent.url())->fetchPrompts(query()); // destroyed before it has read its file
    log.lines.clear();
    service.reset();
    another.reset();
    for (auto* fetch : {&beforeTheFile, &inFlight, &third}) {
        EXPECT_EQ(failureOf<PromptError>(std::move(*fetch)).kind(), PromptError::Case::networkError);
    }
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(PromptServiceTest, TheKeyIsInNoLine) {
    CannedServer server;
    const auto service = serviceAt(server.url());
    const QByteArray echo = "the key " + promptKey.toUtf8() + " is unknown";
    for (const QByteArray& status : {QByteArray("500 Oh"), QByteArray("403 No"), QByteArray("200 OK")}) {
        server.say(status, echo);
        const PromptError error = failureOf<PromptError>(service->fetchPrompts(query()));
        EXPECT_FALSE(error.localizedDescription().contains(promptKey));
    }
    EXPECT_THAT(log.lines.filter(u"the key [API key] is unknown"_s), Not(IsEmpty()));
    EXPECT_THAT(log.lines.filter(promptKey), IsEmpty());

    for (const QString& shortKey : {u""_s, u"abcdefghij"_s}) { // its first ten characters would give it away
        log.lines.clear();
        PromptService other({.url = server.url(), .key = shortKey}, cacheFile(), log, clock);
        failureOf<PromptError>(other.fetchPrompts(query()));
        EXPECT_THAT(log.lines,
                    Contains(u"[PromptService] 🔑 API Key: ... (length: %1)"_s.arg(shortKey.size())));
    }
}

TEST(PromptKey, IsTheTextThatItsBase64StandsFor) {
    struct Row {
        QByteArray base64;
        QString key;
    };
    for (const Row& row : {Row{"cGstMTIz", u"pk-123"_s}, Row{"cGstw58=", u"pk-ß"_s}, Row{"", u""_s},
                           Row{"cGst MTIz", u""_s}, Row{"//8=", u""_s}, // not UTF-8
                           Row{"cGsNCng=", u""_s}}) { // a line break would begin another header
        EXPECT_EQ(decodeKey(row.base64), row.key) << row.base64.toStdString();
    }
}

} // namespace ostrelle
