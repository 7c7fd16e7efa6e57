// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/AnalyticsStore.h"

#include "core/Attempt.h"
#include "core/Iso8601.h"
#include "state/Sum.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QPointer>
#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString launchesKey = u"Analytics_TotalLaunches"_s;
const QString installDateKey = u"Analytics_InstallDate"_s;
const QString imagesByDayKey = u"Analytics_ImagesByDay"_s;
const QString lastSentKey = u"Analytics_LastSent"_s;

constexpr qint64 sendPeriod = qint64{15} * 60;              // seconds
constexpr qsizetype mostBytes = qsizetype{4} * 1024 * 1024; // of a hundred thousand days
constexpr double largestCount = 1e15;

/// Nothing when the data are not a list of days.
std::optional<QList<DayCount>> daysOf(const QByteArray& json) {
    const QJsonDocument document = json.size() <= mostBytes ? QJsonDocument::fromJson(json) : QJsonDocument();
    if (!document.isArray()) {
        return std::nullopt;
    }
    QList<DayCount> days;
    const QJsonArray entries = document.array();
    for (const QJsonValue& entry : entries) {
        const QJsonValue date = entry[u"date"];
        const double count = entry[u"count"].toDouble(-1);
        if (!date.isString() || !(count >= 0 && count <= largestCount)) {
            return std::nullopt;
        }
        days.append({.date = date.toString(), .count = static_cast<qint64>(count)});
    }
    std::sort(days.begin(), days.end(), [](const DayCount& a, const DayCount& b) { return a.date < b.date; });
    return days;
}

QByteArray jsonOf(const QList<DayCount>& days) {
    QJsonArray entries;
    for (const DayCount& day : days) {
        entries.append(QJsonObject{{u"date"_s, day.date}, {u"count"_s, day.count}});
    }
    return QJsonDocument(entries).toJson(QJsonDocument::Compact);
}

} // namespace

AnalyticsStore::AnalyticsStore(DefaultsStore& defaults, Clock& clock, PlainLog& log, Measurement& measurement,
                               UsageReports& reports)
    : m_defaults(defaults)
    , m_clock(clock)
    , m_log(log)
    , m_measurement(measurement)
    , m_reports(reports)
    , m_tasks([&log](const QString& words) { log.print(u"[Analytics] ERROR: "_s + words); })
    , m_totalLaunches(defaults.get<qint64>(launchesKey).value_or(0))
    , m_installDate(defaults.get<QDateTime>(installDateKey)) {
    readDays();
    updateUserProperties();
}

void AnalyticsStore::readDays() {
    m_imagesProcessedByDay =
        daysOf(m_defaults.get<QByteArray>(imagesByDayKey).value_or(QByteArray())).value_or(QList<DayCount>());
    m_totalImagesProcessed = 0;
    for (const DayCount& day : std::as_const(m_imagesProcessedByDay)) {
        m_totalImagesProcessed = sumOf(m_totalImagesProcessed, day.count);
    }
}

void AnalyticsStore::recordLaunch() {
    m_totalLaunches = sumOf(m_totalLaunches, 1);
    m_defaults.set(launchesKey, m_totalLaunches);
    if (!m_installDate) {
        m_installDate = m_clock.now();
        m_defaults.set(installDateKey, *m_installDate);
        updateUserProperties();
        m_measurement.logEvent(u"first_launch"_s, {});
    }
    updateUserProperties();
    m_measurement.logEvent(u"app_launched"_s, {{u"launch_number"_s, m_totalLaunches},
                                               {u"days_since_install"_s, daysSinceInstall()}});
    Q_EMIT changed();
    sendIfDue();
}

/// Adds to the stored days, as another process may have counted, too.
void AnalyticsStore::recordImageProcessed() {
    readDays();
    m_totalImagesProcessed = sumOf(m_totalImagesProcessed, 1);
    const QString day = today();
    const auto entry =
        std::lower_bound(m_imagesProcessedByDay.begin(), m_imagesProcessedByDay.end(), day,
                         [](const DayCount& one, const QString& date) { return one.date < date; });
    if (entry != m_imagesProcessedByDay.end() && entry->date == day) {
        entry->count = sumOf(entry->count, 1);
    } else {
        m_imagesProcessedByDay.insert(entry, {.date = day, .count = 1});
    }
    m_defaults.set(imagesByDayKey, jsonOf(m_imagesProcessedByDay));
    m_measurement.logEvent(u"image_processed"_s,
                           {{u"total_count"_s, m_totalImagesProcessed}, {u"date"_s, day}});
    Q_EMIT changed();
    sendIfDue();
}

void AnalyticsStore::updateUserProperties() {
    m_measurement.setUserProperty(u"api_key_id"_s, apiKeyId(m_defaults));
}

QString AnalyticsStore::today() const {
    return m_clock.now().toTimeZone(m_clock.timeZone()).date().toString(u"yyyy-MM-dd");
}

/// A day is whole when its hour has come again. A clock that was set back gives none.
qint64 AnalyticsStore::daysSinceInstall() const {
    if (!m_installDate || !m_installDate->isValid()) {
        return 0;
    }
    const QDateTime first = m_installDate->toTimeZone(m_clock.timeZone());
    const QDateTime now = m_clock.now().toTimeZone(m_clock.timeZone());
    const qint64 days = first.date().daysTo(now.date()) - (now.time() < first.time() ? 1 : 0);
    return std::max<qint64>(days, 0);
}

double AnalyticsStore::imagesPerDay() const {
    const qint64 days = daysSinceInstall();
    return days >= 1 ? static_cast<double>(m_totalImagesProcessed) / static_cast<double>(days) : 0;
}

std::optional<QString> AnalyticsStore::sendingObstacle() const {
    if (m_reports.url().isEmpty()) {
        return u"This version sends no figures: no address is built in."_s;
    }
    if (!mayReportUsage(m_defaults)) {
        return u"The switch for usage figures in the settings is off, or you have not seen it yet."_s;
    }
    return std::nullopt;
}

void AnalyticsStore::sendIfDue() {
    if (sendingObstacle()) {
        return;
    }
    const double now = static_cast<double>(m_clock.now().toMSecsSinceEpoch()) / 1000;
    const double last = m_defaults.get<double>(lastSentKey).value_or(0);
    if (now - sendPeriod < last) {
        m_log.print(u"[Analytics] Already sent within last 15 minutes, skipping"_s);
        return;
    }
    send();
}

void AnalyticsStore::forceSend() {
    if (!sendingObstacle()) {
        m_log.print(u"[Analytics] Force sending analytics data now..."_s);
        send();
    }
}

QJsonObject AnalyticsStore::payload() const {
    return {{u"user_id"_s, anonymousUserId(m_defaults)},
            {u"timestamp"_s, formatIso8601(m_clock.now())},
            {u"total_launches"_s, m_totalLaunches},
            {u"total_images_processed"_s, m_totalImagesProcessed},
            {u"install_date"_s, m_installDate ? m_installDate->toSecsSinceEpoch() : 0},
            {u"days_active"_s, daysSinceInstall()},
            {u"images_per_day"_s, imagesPerDay()}};
}

void AnalyticsStore::send() {
    m_log.print(u"[Analytics] Starting to send analytics data..."_s);
    const QByteArray json = QJsonDocument(payload()).toJson(QJsonDocument::Compact);
    const QUrl url = m_reports.url();
    m_log.print(u"[Analytics] Payload: "_s + QString::fromUtf8(json));
    m_log.print(u"[Analytics] Sending to URL: "_s + url.toString());
    if (!url.isValid() || url.host().isEmpty()) {
        m_log.print(u"[Analytics] ERROR: Invalid URL - "_s + url.toString());
        return;
    }
    m_log.print(u"[Analytics] JSON data size: %1 bytes"_s.arg(json.size()));
    m_tasks.spawn(post(json));
}

QCoro::Task<> AnalyticsStore::post(QByteArray json) {
    const QPointer<AnalyticsStore> self(this);
    const auto answer = co_await attempt(m_reports.post(json));
    if (!self) {
        co_return; // the program is ending
    }
    if (!answer) {
        m_log.print(u"[Analytics] ERROR: Failed to send data - "_s + answer.words());
        co_return;
    }
    m_log.print(u"[Analytics] Response status: %1"_s.arg(answer->status));
    m_log.print(u"[Analytics] Response body: "_s + answer->body);
    if (answer->status == 200 || answer->status == 201) {
        m_log.print(u"[Analytics] ✓ Successfully sent analytics data"_s);
        m_defaults.set(lastSentKey, static_cast<double>(m_clock.now().toMSecsSinceEpoch()) / 1000);
    } else {
        m_log.print(u"[Analytics] ERROR: Server returned %1"_s.arg(answer->status));
    }
}

} // namespace ostrelle
