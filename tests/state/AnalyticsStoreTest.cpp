// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/AnalyticsStore.h"

#include "core/Error.h"
#include "standins/MemoryDefaults.h"
#include "state/UsageHistory.h"
#include "support/Await.h"
#include "support/RecordingLog.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QTimeZone>
#include <chrono>
#include <optional>

namespace ostrelle {

using namespace Qt::StringLiterals;
using std::chrono::hours;
using std::chrono::minutes;

namespace {

class RecordingMeasurement : public Measurement {
public:
    bool isThere() const override { return true; }
    void logEvent(const QString& name, const QVariantMap& parameters) override {
        events.append(name + u' ' + QStringList(parameters.keys()).join(u','));
    }
    void setUserProperty(const QString& name, const std::optional<QString>& value) override {
        property = name + u'=' + value.value_or(u"none"_s);
    }

    QStringList events;
    QString property;
};

class CannedReports : public UsageReports {
public:
    QUrl url() const override { return address; }
    QCoro::Task<UsageReportAnswer> post(QByteArray json) override {
        sent.append(json);
        if (status == 0) {
            throw Error(u"no route"_s);
        }
        co_return UsageReportAnswer{.status = status, .body = {}};
    }

    QUrl address{u"https://figures.example/rest/v1/analytics_events"_s};
    int status = 201;
    QList<QByteArray> sent;
};

class AnalyticsStoreTest : public testing::Test {
protected:
    AnalyticsStore& start() { return store.emplace(defaults, clock, log, measurement, reports); }
    void agree() { markUsageSwitchSeen(defaults); }

    MemoryDefaults defaults;
    VirtualClock clock{QDateTime(QDate(2024, 10, 26), QTime(12, 0), QTimeZone::utc()),
                       QTimeZone("America/New_York")};
    RecordingLog log;
    RecordingMeasurement measurement;
    CannedReports reports;
    std::optional<AnalyticsStore> store;
};

} // namespace

TEST_F(AnalyticsStoreTest, CountsLaunchesAndImagesByTheUsersDays) {
    defaults.set(u"OPENAI_API_KEY"_s, u"key"_s);
    start().recordLaunch();
    EXPECT_EQ(measurement.events,
              QStringList({u"first_launch "_s, u"app_launched days_since_install,launch_number"_s}));
    EXPECT_EQ(measurement.property, u"api_key_id=2c70e12b7a0646f9"_s); // of sha256sum
    clock.setNow(QDateTime(QDate(2024, 10, 27), QTime(3, 59),
                           QTimeZone::utc())); // 23:59 of the day before in New York
    store->recordImageProcessed();
    clock.setNow(QDateTime(QDate(2024, 10, 27), QTime(4, 0), QTimeZone::utc()));
    store->recordImageProcessed();
    EXPECT_EQ(store->daysSinceInstall(), 0) << "a day is whole when its hour has come again";
    EXPECT_EQ(store->imagesPerDay(), 0);
    clock.advance(hours(8));
    EXPECT_EQ(store->daysSinceInstall(), 1);
    store->recordImageProcessed();
    EXPECT_EQ(store->imagesPerDay(), 3);
    clock.setNow(
        QDateTime(QDate(2020, 1, 1), QTime(12, 0), QTimeZone::utc())); // the battery of the clock is empty
    store->recordImageProcessed();
    EXPECT_EQ(store->daysSinceInstall(), 0);
    const QList<DayCount> days{{u"2020-01-01"_s, 1}, {u"2024-10-26"_s, 1}, {u"2024-10-27"_s, 2}};
    EXPECT_EQ(store->imagesProcessedByDay(), days);
    EXPECT_EQ(start().imagesProcessedByDay(), days) << "after a restart";
    EXPECT_EQ(store->totalImagesProcessed(), 4);
    EXPECT_EQ(store->totalLaunches(), 1);
}

TEST_F(AnalyticsStoreTest, DamagedDaysAreNone) {
    for (const char* json : {"", "{}", "[{\"date\":\"2024-10-26\"}]", "[{\"date\":1,\"count\":1}]",
                             "[{\"date\":\"2024-10-26\",\"count\":1e300}]",
                             "[{\"date\":\"2024-10-26\",\"count\":-1}]", "[[[["}) {
        defaults.set(u"Analytics_ImagesByDay"_s, QByteArray(json));
        EXPECT_EQ(start().totalImagesProcessed(), 0) << json;
        store->recordImageProcessed();
        EXPECT_EQ(store->totalImagesProcessed(), 1) << json;
    }
}

TEST_F(AnalyticsStoreTest, NothingIsSentWithoutAddressConsentOrNeed) {
    start().recordLaunch();
    store->forceSend();
    EXPECT_EQ(reports.sent.size(), 0) << "the switch was never seen";
    agree();
    reports.address.clear();
    store->recordLaunch();
    store->forceSend();
    EXPECT_EQ(reports.sent.size(), 0);
    EXPECT_TRUE(log.lines.isEmpty());
    EXPECT_FALSE(defaults.exists(u"Analytics_UserId"_s));
    reports.address = QUrl(u"https://figures.example"_s);
    setUsageSwitchOn(defaults, false);
    store->recordLaunch();
    EXPECT_EQ(reports.sent.size(), 0);
    setUsageSwitchOn(defaults, true);
    reports.status = 0;
    store->recordImageProcessed();
    reports.status = 500;
    store->recordImageProcessed();
    EXPECT_EQ(reports.sent.size(), 2) << "a failure is not sent";
    EXPECT_TRUE(log.has(u"[Analytics] ERROR: Failed to send data - no route"_s));
    EXPECT_TRUE(log.has(u"[Analytics] ERROR: Server returned 500"_s));
    reports.status = 200;
    store->recordImageProcessed();
    clock.advance(minutes(15));
    store->recordImageProcessed();
    EXPECT_EQ(reports.sent.size(), 4);
    clock.advance(minutes(14));
    store->recordImageProcessed();
    EXPECT_EQ(reports.sent.size(), 4);
    EXPECT_EQ(log.lines.last(), u"[Analytics] Already sent within last 15 minutes, skipping");
    store->forceSend();
    const QJsonObject payload = QJsonDocument::fromJson(reports.sent.last()).object();
    EXPECT_EQ(payload.keys().join(u' '),
              u"days_active images_per_day install_date timestamp total_images_processed "
              "total_launches user_id");
    EXPECT_EQ(payload[u"install_date"_s].toInteger(), 1729944000);
}

TEST(UsageHistory, KeepsTheLastDaysWhateverWasStored) {
    MemoryDefaults defaults;
    VirtualClock clock;
    defaults.set(u"UsageHistory_Days"_s, QByteArray("[{\"date\":\"2024-01-01\",\"dollars\":{\"m\":-1}},7]"));
    UsageHistory history(defaults, clock);
    for (int day = 0; day < 450; ++day) {
        history.recordCost(u"gpt-4o-mini"_s, 0.25);
        history.recordOutcome(u"captioned"_s);
        history.recordOutcome(u"captioned"_s);
        clock.advance(hours(24));
    }
    const QList<UsageDay> days = UsageHistory(defaults, clock).days();
    EXPECT_EQ(days.size(), UsageHistory::rememberedDays);
    EXPECT_EQ(days.last(), (UsageDay{.date = u"2026-01-18"_s,
                                     .dollars = {{u"gpt-4o-mini"_s, 0.25}},
                                     .outcomes = {{u"captioned"_s, 2}}}));
}

} // namespace ostrelle
