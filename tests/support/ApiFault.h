// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Error.h"

#include <QByteArray>
#include <QString>

namespace ostrelle {

/// Why the stand-in for the model service refuses a request, in the words and the form of the real service.
class ApiFault : public Error {
public:
    /// `parameter` and `code` are null in the body when empty.
    ApiFault(int status, const QString& message, QString parameter = {}, QString code = {});

    int status() const noexcept { return m_status; }
    const QString& parameter() const noexcept { return m_parameter; }
    /// {"error": {"message", "type", "param", "code"}}
    QByteArray body() const;

private:
    int m_status;
    QString m_parameter;
    QString m_code;
};

} // namespace ostrelle
