// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <QString>
#include <QStringList>

namespace ostrelle {

/// A question or a message that the user must answer before going on.
struct Alert {
    enum class Style { informational, warning };

    QString title;
    QString text;
    QStringList buttons; ///< the first is the default
    Style style = Style::informational;
    int destroyingButton = -1; ///< the index of the one that cannot be undone; Enter must not press it
};

class Alerts {
public:
    virtual ~Alerts() = default;

    /// Shows the alert and resumes with the index of the button pressed, or -1 when it was closed and none of
    /// several buttons is "Cancel".
    virtual QCoro::Task<int> show(Alert alert) = 0;
};

} // namespace ostrelle
