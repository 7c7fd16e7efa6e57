// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/TaskGroup.h"
#include "platform/Clock.h"
#include "platform/DefaultsStore.h"
#include "platform/PlainLog.h"
#include "product/Measurement.h"
#include "product/UsageReporting.h"

#include <QCoroTask>
#include <QDateTime>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QString>
#include <optional>

namespace ostrelle {

/// One day's work.
struct DayCount {
    QString date; ///< of the user's time zone, as "yyyy-MM-dd"
    qint64 count = 0;

    bool operator==(const DayCount&) const = default;
};

/// Counts how much the program is used: launches, and the images captioned on each day. The counters stay on
/// this machine, except where an address is built in and mayReportUsage(). For the thread of the event loop
/// only.
class AnalyticsStore : public QObject {
    Q_OBJECT

public:
    /// All arguments must outlive the store.
    AnalyticsStore(DefaultsStore& defaults, Clock& clock, PlainLog& log, Measurement& measurement,
                   UsageReports& reports);

    /// The program has been started.
    void recordLaunch();
    /// An image has been captioned, by this process.
    void recordImageProcessed();
    /// The API key has changed.
    void updateUserProperties();
    /// Sends the figures, unless that was done in the last 15 minutes or must not be.
    void sendIfDue();
    /// Sends the figures at once, if they may be sent.
    void forceSend();
    /// Whether this program has somewhere to send figures or events to.
    bool isReportingBuiltIn() const { return m_measurement.isThere() || !m_reports.url().isEmpty(); }
    /// Why the figures cannot be sent, a sentence; nothing when they can.
    std::optional<QString> sendingObstacle() const;

    qint64 totalLaunches() const { return m_totalLaunches; }
    std::optional<QDateTime> installDate() const { return m_installDate; }
    /// Oldest first, one entry for each day with work.
    const QList<DayCount>& imagesProcessedByDay() const { return m_imagesProcessedByDay; }
    qint64 totalImagesProcessed() const { return m_totalImagesProcessed; }
    /// Whole days since the first launch; 0 before it.
    qint64 daysSinceInstall() const;
    /// Images for each of these days; 0 on the first.
    double imagesPerDay() const;
    /// The user's present day, as in DayCount.
    QString today() const;

Q_SIGNALS:
    void changed();

private:
    void readDays();
    QJsonObject payload() const;
    void send();
    QCoro::Task<> post(QByteArray json);

    DefaultsStore& m_defaults;
    Clock& m_clock;
    PlainLog& m_log;
    Measurement& m_measurement;
    UsageReports& m_reports;
    TaskGroup m_tasks;
    qint64 m_totalLaunches = 0;
    std::optional<QDateTime> m_installDate;
    QList<DayCount> m_imagesProcessedByDay;
    qint64 m_totalImagesProcessed = 0;
};

} // namespace ostrelle
