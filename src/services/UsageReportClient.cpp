// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/UsageReportClient.h"

#include <chrono>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

UsageReportClient::UsageReportClient(QUrl url, QString key, Clock& clock)
    : m_url(std::move(url)), m_key(std::move(key)), m_channel(clock) {}

QCoro::Task<UsageReportAnswer> UsageReportClient::post(QByteArray json) {
    QNetworkRequest request(m_url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
    request.setRawHeader("Prefer", "return=representation");
    if (!m_key.isEmpty() && m_key != u"your-anon-key") {
        request.setRawHeader("apikey", m_key.toUtf8());
        request.setRawHeader("Authorization", "Bearer " + m_key.toUtf8());
    }
    const HttpReply reply = co_await m_channel.post(request, json, std::chrono::seconds(10));
    co_return UsageReportAnswer{.status = reply.status.value_or(0), .body = QString::fromUtf8(reply.body)};
}

} // namespace ostrelle
