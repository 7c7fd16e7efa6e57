// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/MeasurementProtocol.h"
#include "services/PromptServiceFixture.h"
#include "services/UsageReportClient.h"
#include "standins/MemoryDefaults.h"
#include "support/Await.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonObject>
#include <chrono>

namespace ostrelle {

using namespace Qt::StringLiterals;
using std::chrono::seconds;

TEST(UsageReportClient, SendsItsKeyUnlessItIsNone) {
    CannedServer server;
    server.answer = "HTTP/1.1 201 Created\r\nContent-Length: 2\r\nConnection: close\r\n\r\n[]";
    VirtualClock clock;
    const QUrl url = server.url().resolved(QUrl(u"/rest/v1/analytics_events"_s));
    for (const QString& key : {u"a.b.c"_s, QString(), u"your-anon-key"_s}) {
        UsageReportClient client(url, key, clock);
        const UsageReportAnswer answer = await(client.post("{\"a\":1}"));
        EXPECT_EQ(answer.status, 201);
        EXPECT_EQ(answer.body, u"[]");
        const QByteArray head = server.heads.last().toLower();
        EXPECT_TRUE(head.startsWith("post /rest/v1/analytics_events http")) << head.constData();
        EXPECT_TRUE(head.contains("prefer: return=representation"));
        EXPECT_EQ(head.contains("apikey: a.b.c") && head.contains("authorization: bearer a.b.c"),
                  key == u"a.b.c"_s);
    }
}

class MeasurementProtocolTest : public testing::Test {
protected:
    QJsonObject lastBody() const {
        const QByteArray request = server.heads.last();
        return QJsonDocument::fromJson(request.mid(request.indexOf("\r\n\r\n") + 4)).object();
    }
    void pass(seconds span) {
        clock.advance(span);
        await(protocol.finished());
    }

    CannedServer server;
    MemoryDefaults defaults;
    VirtualClock clock;
    MeasurementProtocol protocol{
        {.url = server.url(), .measurementId = u"G-1"_s, .secret = u"s&cret"_s}, defaults, clock};
};

TEST_F(MeasurementProtocolTest, EventsGoInBatchesAndOnlyWithConsent) {
    server.answer = "HTTP/1.1 204 No Content\r\nConnection: close\r\n\r\n";
    protocol.logEvent(u"before"_s, {});
    pass(seconds(11));
    EXPECT_EQ(server.heads.size(), 0);
    markUsageSwitchSeen(defaults);
    protocol.setUserProperty(u"api_key_id"_s, u"0123"_s);
    for (int number = 0; number < 30; ++number) {
        protocol.logEvent(u"image_processed"_s, {{u"total_count"_s, qint64(number)}});
    }
    pass(seconds(11));
    ASSERT_EQ(server.heads.size(), 1);
    EXPECT_TRUE(
        server.heads.last().startsWith("POST /mp/collect?measurement_id=G-1&api_secret=s%26cret HTTP"));
    EXPECT_EQ(lastBody()[u"events"_s].toArray().size(), MeasurementProtocol::batchSize);
    EXPECT_EQ(lastBody()[u"client_id"_s].toString(), anonymousUserId(defaults));
    EXPECT_EQ(lastBody()[u"user_properties"_s][u"api_key_id"][u"value"].toString(), u"0123");
    setUsageSwitchOn(defaults, false);
    pass(seconds(11));
    EXPECT_EQ(server.heads.size(), 1) << "switched off while five waited";
    setUsageSwitchOn(defaults, true);
    pass(seconds(60));
    EXPECT_EQ(server.heads.size(), 1);
}

TEST_F(MeasurementProtocolTest, ABatchIsTriedTwiceAndTheQueueIsBounded) {
    server.answer = "HTTP/1.1 500 No\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
    markUsageSwitchSeen(defaults);
    for (int number = 0; number < 1000; ++number) {
        protocol.logEvent(u"e"_s, {});
    }
    for (int time = 0; time < 20; ++time) {
        pass(seconds(11));
    }
    EXPECT_EQ(server.heads.size(), 2 * MeasurementProtocol::mostWaiting / MeasurementProtocol::batchSize);
}

} // namespace ostrelle
