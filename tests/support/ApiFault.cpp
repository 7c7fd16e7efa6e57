// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/ApiFault.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace ostrelle {

using namespace Qt::StringLiterals;

ApiFault::ApiFault(int status, const QString& message, QString parameter, QString code)
    : Error(message), m_status(status), m_parameter(std::move(parameter)), m_code(std::move(code)) {}

QByteArray ApiFault::body() const {
    const auto orNull = [](const QString& text) { return text.isEmpty() ? QJsonValue() : QJsonValue(text); };
    const QJsonObject error{{u"message"_s, localizedDescription()},
                            {u"type"_s, u"invalid_request_error"_s},
                            {u"param"_s, orNull(m_parameter)},
                            {u"code"_s, orNull(m_code)}};
    return QJsonDocument(QJsonObject{{u"error"_s, error}}).toJson();
}

} // namespace ostrelle
