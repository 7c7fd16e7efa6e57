// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/TaskGroup.h"
#include "platform/Clock.h"
#include "platform/DefaultsStore.h"
#include "product/Measurement.h"
#include "services/HttpChannel.h"

#include <QCoroTask>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QUrl>
#include <memory>

namespace ostrelle {

/// Where events go, as the service issued it.
struct MeasurementAddress {
    QUrl url = {}; ///< scheme and host; empty: no events
    QString measurementId = {};
    QString secret = {};
};

/// Sends events over the Measurement Protocol of Google Analytics 4, in batches. An event that comes while
/// mayReportUsage() does not hold is dropped, and so is a batch that could not be sent twice.
class MeasurementProtocol : public Measurement {
public:
    /// As the protocol's reference has it: events in a request.
    static constexpr qsizetype batchSize = 25;
    /// Events that wait; the oldest are dropped beyond it.
    static constexpr qsizetype mostWaiting = 200;

    /// All must outlive the object; the defaults tell of the user's consent.
    MeasurementProtocol(MeasurementAddress address, DefaultsStore& defaults, Clock& clock);

    bool isThere() const override { return !m_address.url.isEmpty(); }
    void logEvent(const QString& name, const QVariantMap& parameters) override;
    void setUserProperty(const QString& name, const std::optional<QString>& value) override;

    /// Resumes when no request is under way.
    QCoro::Task<> finished() const { return m_tasks.finished(); }

private:
    void sendBatch();
    QCoro::Task<> post(QByteArray body);
    QUrl target() const;

    MeasurementAddress m_address;
    DefaultsStore& m_defaults;
    Clock& m_clock;
    QJsonArray m_events;
    QJsonObject m_userProperties;
    std::unique_ptr<Timer> m_timer;           ///< runs while events wait
    TaskGroup m_tasks{[](const QString&) {}}; // which do not throw
    HttpChannel m_channel;                    // last: its end fails the requests that the tasks await
};

} // namespace ostrelle
