// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"
#include "services/RequestGate.h"

#include <QByteArray>
#include <QCoroTask>
#include <QNetworkRequest>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

class QNetworkAccessManager;
class QNetworkReply;

namespace ostrelle {

/// A complete answer to a request, whatever its status.
struct HttpReply {
    std::optional<int> status; ///< absent when the answer has none that HTTP knows (100 and up)
    QByteArray body;
};

/// Sends requests, so many at once. Each lives as long as bytes go up or come down, but not beyond a
/// deadline, and with a bounded reply. Redirects are not followed, cookies and credentials not kept.
/// Destroying the channel fails what is in flight.
class HttpChannel {
public:
    /// How long a posted request may go without a byte up or down.
    static constexpr std::chrono::milliseconds idleTimeOut = std::chrono::seconds(60);
    /// From the start of any request to the last byte of its reply.
    static constexpr std::chrono::milliseconds deadline = std::chrono::minutes(10);
    /// In bytes. The longest reply that the services give is a thousandth of it.
    static constexpr qsizetype largestReply = qsizetype{4} * 1024 * 1024;

    /// As many as Qt keeps connections to one host: more would only wait inside Qt, on their own time.
    static constexpr int mostAtOnce = 6;

    explicit HttpChannel(Clock& clock);
    ~HttpChannel();

    /// Posts the body and resumes with the whole reply. Throws TransportError.
    QCoro::Task<HttpReply> post(const QNetworkRequest& request, QByteArray body);
    /// Gets, with an idle time-out of the caller's, and resumes with the whole reply. Throws TransportError.
    QCoro::Task<HttpReply> get(const QNetworkRequest& request, std::chrono::milliseconds idle);

private:
    using Send = std::function<QNetworkReply*(QNetworkAccessManager&, const QNetworkRequest&)>;

    QCoro::Task<HttpReply> exchange(QNetworkRequest request, std::chrono::milliseconds idle, Send send);

    Clock& m_clock;
    std::unique_ptr<QNetworkAccessManager> m_manager;
    std::shared_ptr<RequestGate> m_gate = std::make_shared<RequestGate>(mostAtOnce);
};

} // namespace ostrelle
