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

    /// Shows the alert and resumes with the words of the button pressed. A closed alert counts as its only
    /// button, or as "Cancel" if it has that; otherwise the answer is empty.
    virtual QCoro::Task<QString> show(Alert alert) = 0;
};

} // namespace ostrelle
