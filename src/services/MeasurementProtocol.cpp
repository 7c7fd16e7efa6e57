// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/MeasurementProtocol.h"

#include "core/Attempt.h"
#include "product/UsageReporting.h"

#include <QJsonDocument>
#include <QUrlQuery>
#include <algorithm>
#include <chrono>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::seconds collecting(10); // so that a run's events go together
constexpr std::chrono::seconds idle(10);

} // namespace

MeasurementProtocol::MeasurementProtocol(MeasurementAddress address, DefaultsStore& defaults, Clock& clock)
    : m_address(std::move(address)), m_defaults(defaults), m_clock(clock), m_channel(clock) {}

void MeasurementProtocol::logEvent(const QString& name, const QVariantMap& parameters) {
    if (!isThere() || !mayReportUsage(m_defaults)) {
        return;
    }
    m_events.append(QJsonObject{{u"name"_s, name}, {u"params"_s, QJsonObject::fromVariantMap(parameters)}});
    if (m_events.size() > mostWaiting) {
        m_events.removeFirst();
    }
    if (!m_timer) {
        m_timer = m_clock.after(collecting, [this] { sendBatch(); });
    }
}

void MeasurementProtocol::setUserProperty(const QString& name, const std::optional<QString>& value) {
    if (value) {
        m_userProperties.insert(name, QJsonObject{{u"value"_s, *value}});
    } else {
        m_userProperties.remove(name);
    }
}

void MeasurementProtocol::sendBatch() {
    m_timer.reset();
    if (!mayReportUsage(m_defaults)) { // switched off while they waited
        m_events = {};
        return;
    }
    QJsonArray batch;
    while (!m_events.isEmpty() && batch.size() < batchSize) {
        batch.append(m_events.takeAt(0));
    }
    if (!m_events.isEmpty()) {
        m_timer = m_clock.after(collecting, [this] { sendBatch(); });
    }
    const QJsonObject body{{u"client_id"_s, anonymousUserId(m_defaults)},
                           {u"user_properties"_s, m_userProperties},
                           {u"events"_s, batch}};
    m_tasks.spawn(post(QJsonDocument(body).toJson(QJsonDocument::Compact)));
}

QUrl MeasurementProtocol::target() const {
    QUrl url = m_address.url;
    url.setPath(u"/mp/collect"_s);
    QUrlQuery query;
    query.addQueryItem(u"measurement_id"_s, m_address.measurementId);
    query.addQueryItem(u"api_secret"_s, m_address.secret);
    url.setQuery(query);
    return url;
}

/// The service answers 2xx to whatever it has taken in.
QCoro::Task<> MeasurementProtocol::post(QByteArray body) {
    QNetworkRequest request(target());
    request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
    for (int time = 0; time < 2; ++time) {
        const auto reply = co_await attempt(m_channel.post(request, body, idle));
        if (reply && reply->status.value_or(0) / 100 == 2) {
            co_return;
        }
    }
}

} // namespace ostrelle
