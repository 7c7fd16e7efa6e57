// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Error.h"

#include <QNetworkReply>

namespace ostrelle {

/// A request that got no complete answer: no connection, one that broke, or one that took too long.
class TransportError : public Error {
public:
    TransportError(QNetworkReply::NetworkError code, QString text);

    /// Nothing more went up or came down, or all of it took too long.
    static TransportError timedOut();
    /// The program ends, and what asked is gone.
    static TransportError closing();
    /// The answer is larger than anything that the service has to say.
    static TransportError tooLarge(qint64 limit);

    QNetworkReply::NetworkError code() const noexcept { return m_code; }
    bool isTimeOut() const noexcept { return m_code == QNetworkReply::TimeoutError; }

private:
    QNetworkReply::NetworkError m_code;
};

} // namespace ostrelle
