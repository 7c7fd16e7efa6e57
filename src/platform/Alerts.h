// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <QString>
#include <QStringList>

namespace ostrelle {

/// A question or a piece of news that stops the user.
struct Alert {
    enum class Style { informational, warning };

    QString title;
    QString text;
    QStringList buttons; ///< the first is the default
    Style style = Style::informational;
};

class Alerts {
public:
    virtual ~Alerts() = default;

    /// Shows the alert and resumes with the index of the button that was pressed.
    virtual QCoro::Task<int> show(Alert alert) = 0;
};

} // namespace ostrelle
