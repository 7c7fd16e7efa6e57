// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Alerts.h"

#include <QCoroTask>

namespace ostrelle {

/// Alerts as dialogs over the active window. The program goes on behind them.
class DesktopAlerts : public Alerts {
public:
    /// Escape and closing the dialog press "Cancel" or the only button, and otherwise none.
    QCoro::Task<QString> show(Alert alert) override;
};

} // namespace ostrelle
