// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Error.h"

#include <QNetworkReply>

namespace ostrelle {

/// A request got no complete reply: there was no connection, it broke, or it took too long.
class TransportError : public Error {
public:
    TransportError(QNetworkReply::NetworkError code, QString text);

    /// Nothing moved up or down for too long, or the whole exchange took too long.
    static TransportError timedOut();
    /// The program is ending and the client is gone.
    static TransportError closing();
    /// The reply is larger than anything the service has to say.
    static TransportError tooLarge(qint64 limit);

    QNetworkReply::NetworkError code() const noexcept { return m_code; }
    bool isTimeOut() const noexcept { return m_code == QNetworkReply::TimeoutError; }

private:
    QNetworkReply::NetworkError m_code;
};

} // namespace ostrelle
