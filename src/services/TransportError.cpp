// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/TransportError.h"

#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

TransportError::TransportError(QNetworkReply::NetworkError code, QString text)
    : Error(std::move(text)), m_code(code) {}

TransportError TransportError::timedOut() {
    return {QNetworkReply::TimeoutError, u"The request timed out."_s};
}

TransportError TransportError::closing() {
    return {QNetworkReply::OperationCanceledError, u"The program is closing."_s};
}

TransportError TransportError::tooLarge(qint64 limit) {
    return {QNetworkReply::UnknownContentError,
            u"The reply is larger than "_s + QString::number(limit) + u" bytes."_s};
}

} // namespace ostrelle
