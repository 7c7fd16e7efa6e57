// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/PromptService.h"

#include "core/Iso8601.h"
#include "platform/ServiceEndpoints.h"
#include "promptserver/PromptServer.h"
#include "services/PromptError.h"
#include "services/PromptResponse.h"
#include "support/Await.h"
#include "support/RecordingLog.h"
#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QJsonDocument>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <atomic>

namespace ostrelle {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

const QString key = u"pk-0123456789abcdef-ß"_s;
const QString apKey = u"v1-apSports-football-attemptCaption-true-false"_s;

PromptQuery query() {
    return {.includeOffenseDefense = true};
}

PromptTemplates templatesNumber(int number) {
    const auto text = [number](const QString& name) { return name + u" “é” "_s + QString::number(number); };
    return {.commonRules = text(u"common"_s),
            .sportInstructions = text(u"sport"_s),
            .styleRules = text(u"style"_s),
            .fallbackInstructions = text(u"fallback"_s),
            .audioInstructions = text(u"audio"_s),
            .offenseDefenseInstructions = {}};
}

/// A prompt server whose templates are numbered in the order of the requests.
class CountingServer {
public:
    QUrl url() const { return m_server.url(); }
    int requests() const { return *m_requests; }

private:
    std::shared_ptr<std::atomic_int> m_requests = std::make_shared<std::atomic_int>(0);
    PromptServer m_server{{.apiKey = key}, [requests = m_requests](const PromptQuery&) {
                              return toJson(templatesNumber(++*requests));
                          }};
};

/// A server that says what it is told to, and records what it was asked. Without an answer it says nothing.
class CannedServer : public QObject {
public:
    CannedServer() {
        m_server.listen(QHostAddress::LocalHost);
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            QTcpSocket* socket = m_server.nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
                heads.append(socket->readAll());
                if (!answer.isEmpty()) {
                    socket->write(answer);
                    socket->disconnectFromHost();
                }
            });
        });
    }
    QUrl url() const { return QUrl(u"http://127.0.0.1:%1"_s.arg(m_server.serverPort())); }
    void say(const QByteArray& status, const QByteArray& body) {
        answer = "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size()) +
                 "\r\nConnection: close\r\n\r\n" + body;
    }

    QByteArray answer;
    QList<QByteArray> heads;

private:
    QTcpServer m_server;
};

QByteArray goodReply() {
    const QJsonObject reply{{u"version"_s, u"v1"_s},
                            {u"style"_s, u"apSports"_s},
                            {u"sport"_s, u"football"_s},
                            {u"templates"_s, toJson(templatesNumber(1))},
                            {u"metadata"_s, QJsonObject{{u"fetchedAt"_s, u"x"_s}, {u"cacheKey"_s, u"y"_s}}}};
    return QJsonDocument(reply).toJson(QJsonDocument::Compact);
}

PromptError failureOf(QCoro::Task<PromptTemplates> fetch) {
    try {
        await(std::move(fetch));
    } catch (const PromptError& error) {
        return error;
    }
    throw std::runtime_error("the fetch has not failed");
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class PromptServiceTest : public testing::Test {
protected:
    std::unique_ptr<PromptService> serviceAt(const QUrl& url) {
        return std::make_unique<PromptService>(PromptAccess{.url = url, .key = key}, cacheFile(), log, clock);
    }
    QString cacheFile() const { return folder.filePath(u"made/on demand/prompt-cache.json"_s); }
    void putCacheFile(const QByteArray& bytes) const {
        QDir(folder.path()).mkpath(u"made/on demand"_s);
        QFile file(cacheFile());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    QStringList linesWith(const QString& part) const { return log.lines.filter(part); }

    QTemporaryDir folder;
    RecordingLog log;
    VirtualClock clock;
};

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
    const QStringList lines = log.lines.sliced(log.lines.indexOf(u"[PromptService]   version: v1"_s));
    ASSERT_GE(lines.size(), 13);
    EXPECT_THAT(lines, ElementsAre(u"[PromptService]   version: v1"_s,
                                   u"[PromptService] ℹ️ No valid cache found for key: "_s + apKey,
                                   u"[PromptService] 🌐 Fetching fresh prompt from server..."_s,
                                   u"[PromptService] 🌐 Request URL: "_s + url,
                                   u"[PromptService] 🔑 API Key: pk-0123456... (length: 21)"_s,
                                   u"[PromptService] 📡 Sending request..."_s,
                                   u"[PromptService] 📨 Response: HTTP 200"_s, testing::_,
                                   u"[PromptService] ✅ Successfully decoded response"_s,
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
    EXPECT_TRUE(server.heads[0].contains("X-API-Key: " + key.toUtf8() + "\r\n"));
    EXPECT_TRUE(server.heads[0].contains("Accept: application/json\r\n"));
}

TEST_F(PromptServiceTest, AnEntryIsUsedForAnHour) {
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

TEST_F(PromptServiceTest, EachChoiceHasAnEntryOfItsOwn) {
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

TEST_F(PromptServiceTest, AForcedFetchThatFailsLeavesTheEntry) {
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
        {"204 Nothing", "", Case::serverError, u"Server error: HTTP 204: "_s,
         u"❌ Server error HTTP 204: "_s},
        {"302 Found", "", Case::serverError, u"HTTP 302: "_s, u"📨 Response: HTTP 302"_s},
        {"500 Oh", "\xff\xfe", Case::serverError, u"HTTP 500: Unknown error"_s,
         u"❌ Server error HTTP 500: Unknown error"_s},
        {"200 OK", "", Case::decodingError, undecodable, u"📦 Data size: 0 bytes"_s},
        {"200 OK", "[]", Case::decodingError, u"not a JSON object"_s, u"Response body: []"_s},
        {"200 OK", "\xff", Case::decodingError, undecodable, u"Response body: <non-utf8>"_s},
        {"200 OK", QByteArray(100000, '['), Case::decodingError, undecodable,
         u"Response body: "_s + QString(500, u'[')},
        {"200 OK",
         without("audioInstructions"),
         Case::decodingError,
         u"\"templates.audioInstructions\" is not a text"_s,
         {}},
        {"200 OK", without("offenseDefenseInstructions"), Case::decodingError, undecodable, {}},
        {"200 OK", without("version"), Case::decodingError, u"\"version\""_s, {}},
        {"200 OK", without("metadata"), Case::decodingError, u"\"metadata\" is not an object"_s, {}},
        {"200 OK", without("cacheKey"), Case::decodingError, u"\"metadata.cacheKey\""_s,
         u"❌ Decoding error: "_s},
    };
    CannedServer server;
    const auto service = serviceAt(server.url());
    for (const Row& row : rows) {
        log.lines.clear();
        server.say(row.status, row.body);
        const PromptError error = failureOf(service->fetchPrompts(query()));
        EXPECT_EQ(error.kind(), row.kind) << row.status.toStdString() << row.body.left(80).toStdString();
        EXPECT_TRUE(error.localizedDescription().contains(row.words)) << error.what();
        EXPECT_FALSE(linesWith(u"[PromptService] "_s + row.line).isEmpty()) << row.line.toStdString();
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
        EXPECT_EQ(failureOf(service->fetchPrompts(query())).kind(), PromptError::Case::invalidURL)
            << base.toStdString();
        EXPECT_THAT(log.lines, Contains(u"[PromptService] ❌ Failed to build URL from base: "_s +
                                        QUrl(base).toString()));
    }
    QUrl nobody;
    {
        const CannedServer server;
        nobody = server.url();
    }
    const auto service = serviceAt(nobody);
    const PromptError error = failureOf(service->fetchPrompts(query()));
    EXPECT_EQ(error.kind(), PromptError::Case::networkError);
    EXPECT_TRUE(error.localizedDescription().startsWith(u"Network error: "_s));
    EXPECT_FALSE(linesWith(u"[PromptService] ❌ Network error: "_s).isEmpty());
}

TEST_F(PromptServiceTest, AServerHasThirtySeconds) {
    CannedServer silent;
    const auto service = serviceAt(silent.url());
    const QCoro::Task<PromptTemplates> fetch = service->fetchPrompts(query());
    waitUntil([&] { return silent.heads.size() == 1; });
    clock.advance(30s - 1ms);
    EXPECT_FALSE(fetch.isReady());
    clock.advance(1ms);
    waitUntil([&] { return fetch.isReady(); });
    EXPECT_THAT(log.lines, Contains(u"[PromptService] ❌ Network error: The request timed out."_s));
}

TEST_F(PromptServiceTest, AServiceThatGoesFailsItsFetchesInSilence) {
    CannedServer silent;
    auto service = serviceAt(silent.url());
    auto beforeTheFile = service->fetchPrompts(query());
    auto another = serviceAt(silent.url());
    auto inFlight = another->fetchPrompts(query());
    waitUntil([&] { return silent.heads.size() == 2; });
    auto third = serviceAt(silent.url())->fetchPrompts(query()); // gone before it has read its file
    log.lines.clear();
    service.reset();
    another.reset();
    for (auto* fetch : {&beforeTheFile, &inFlight, &third}) {
        EXPECT_EQ(failureOf(std::move(*fetch)).kind(), PromptError::Case::networkError);
    }
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(PromptServiceTest, TheKeyIsInNoLine) {
    CannedServer server;
    const auto service = serviceAt(server.url());
    const QByteArray echo = "the key " + key.toUtf8() + " is unknown";
    for (const QByteArray& status : {QByteArray("500 Oh"), QByteArray("403 No"), QByteArray("200 OK")}) {
        server.say(status, echo);
        const PromptError error = failureOf(service->fetchPrompts(query()));
        EXPECT_FALSE(error.localizedDescription().contains(key));
    }
    EXPECT_THAT(linesWith(u"the key [API key] is unknown"_s), Not(IsEmpty()));
    EXPECT_THAT(linesWith(key), IsEmpty());

    for (const QString& shortKey : {u""_s, u"abcdefghij"_s}) { // the first ten of it would be all of it
        log.lines.clear();
        PromptService other({.url = server.url(), .key = shortKey}, cacheFile(), log, clock);
        failureOf(other.fetchPrompts(query()));
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
                           Row{"cGst MTIz", u""_s}, Row{"//8=", u""_s}, // no UTF-8
                           Row{"cGsNCng=", u""_s}}) { // a line break would begin another header
        EXPECT_EQ(decodeKey(row.base64), row.key) << row.base64.toStdString();
    }
}

TEST_F(PromptServiceTest, TwoFetchesOfOneKeyBothAskAndTheLaterIsKept) {
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

TEST_F(PromptServiceTest, TheNextRunFindsTheEntriesOnDisk) {
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

TEST_F(PromptServiceTest, AFileThatIsNoCacheIsReportedAndReplacedByTheNextSave) {
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

TEST_F(PromptServiceTest, AnEntryOfAnotherCenturyIsNotUsed) {
    for (const QByteArray& date : {QByteArray("9999-12-31T23:59:59Z"), QByteArray("0001-01-01T00:00:00Z")}) {
        putCacheFile("{\"" + apKey.toUtf8() + R"(":{"templates":)" +
                     QJsonDocument(toJson(templatesNumber(9))).toJson() + R"(,"fetchedAt":")" + date +
                     R"(","cacheKey":"k"}})");
        const CountingServer server;
        EXPECT_EQ(await(serviceAt(server.url())->fetchPrompts(query())), templatesNumber(1));
    }
}

TEST_F(PromptServiceTest, ACacheThatCannotBeSavedStillServesThisRun) {
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

TEST_F(PromptServiceTest, TheCacheIsClearedInMemoryAndOnDisk) {
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
