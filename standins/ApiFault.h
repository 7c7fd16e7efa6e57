// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Error.h"

#include <QByteArray>
#include <QString>

namespace ostrelle {

/// The reason why the stand-in for the model service refuses a request, in the real service's words and form.
class ApiFault : public Error {
public:
    /// The body names the parameter unless it is empty.
    ApiFault(int status, const QString& message, QString parameter = {});

    int status() const noexcept { return m_status; }
    /// {"error": {"message", "type", "param", "code"}}
    QByteArray body() const;

private:
    int m_status;
    QString m_parameter;
};

} // namespace ostrelle
