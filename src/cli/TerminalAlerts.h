// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Alerts.h"
#include "platform/PlainLog.h"

#include <QCoroTask>

namespace ostrelle {

/// Alerts of a program without windows: prints each and answers it with the last button.
class TerminalAlerts : public Alerts {
public:
    /// The log must outlive the alerts.
    explicit TerminalAlerts(PlainLog& errors) : m_errors(errors) {}

    QCoro::Task<QString> show(Alert alert) override {
        m_errors.print(alert.title + QStringLiteral(": ") + alert.text);
        co_return alert.buttons.value(alert.buttons.size() - 1);
    }

private:
    PlainLog& m_errors;
};

} // namespace ostrelle
