// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "product/UsageReporting.h"
#include "services/HttpChannel.h"

#include <QString>
#include <QUrl>

namespace ostrelle {

/// The REST service for usage figures at the address that the program was built with.
class UsageReportClient : public UsageReports {
public:
    /// `url` is the full address, or empty. `key` is the service's public key; empty or "your-anon-key" stand
    /// for none. The clock must outlive the client.
    UsageReportClient(QUrl url, QString key, Clock& clock);

    QUrl url() const override { return m_url; }
    /// Throws TransportError; ten seconds without a byte end the request.
    QCoro::Task<UsageReportAnswer> post(QByteArray json) override;

private:
    QUrl m_url;
    QString m_key;
    HttpChannel m_channel;
};

} // namespace ostrelle
