// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Gate.h"
#include "platform/Clock.h"

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

/// A complete reply, whatever its status.
struct HttpReply {
    std::optional<int> status; ///< absent when the reply has no valid HTTP status (100 and up)
    QByteArray body;
};

/// Sends requests, a limited number at a time. Each may go on as long as bytes move up or down, but not past
/// a deadline, and its reply is limited in size. Redirects are not followed; cookies and credentials are not
/// kept. Destroying the channel fails the requests in flight.
class HttpChannel {
public:
    /// How long a posted request may go without a byte up or down.
    static constexpr std::chrono::milliseconds idleTimeOut = std::chrono::seconds(60);
    /// From the start of any request to the last byte of its reply.
    static constexpr std::chrono::milliseconds deadline = std::chrono::minutes(10);
    /// In bytes; a thousand times the longest reply of the services.
    static constexpr qsizetype largestReply = qsizetype{4} * 1024 * 1024;

    /// Qt's number of connections per host: more would only wait inside Qt while their own time runs.
    static constexpr int mostAtOnce = 6;

    explicit HttpChannel(Clock& clock);
    ~HttpChannel();

    /// Posts the body and resumes with the whole reply. Throws TransportError.
    QCoro::Task<HttpReply> post(const QNetworkRequest& request, QByteArray body,
                                std::chrono::milliseconds idle = idleTimeOut);
    /// Gets with the caller's idle time-out and resumes with the whole reply. Throws TransportError.
    QCoro::Task<HttpReply> get(const QNetworkRequest& request, std::chrono::milliseconds idle);

private:
    using Send = std::function<QNetworkReply*(QNetworkAccessManager&, const QNetworkRequest&)>;

    QCoro::Task<HttpReply> exchange(QNetworkRequest request, std::chrono::milliseconds idle, Send send);

    Clock& m_clock;
    std::unique_ptr<QNetworkAccessManager> m_manager;
    Gate m_gate{mostAtOnce};
};

} // namespace ostrelle
