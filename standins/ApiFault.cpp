// SPDX-License-Identifier: GPL-3.0-or-later
#include "standins/ApiFault.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

ApiFault::ApiFault(int status, const QString& message, QString parameter)
    : Error(message), m_status(status), m_parameter(std::move(parameter)) {}

QByteArray ApiFault::body() const {
    const QString type = m_status >= 500   ? u"server_error"_s
                         : m_status == 429 ? u"requests"_s
                                           : u"invalid_request_error"_s;
    const QJsonObject error{{u"message"_s, localizedDescription()},
                            {u"type"_s, type},
                            {u"param"_s, m_parameter.isEmpty() ? QJsonValue() : QJsonValue(m_parameter)},
                            {u"code"_s, QJsonValue()}};
    return QJsonDocument(QJsonObject{{u"error"_s, error}}).toJson();
}

} // namespace ostrelle
