// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

class QKeyEvent;

namespace ostrelle {

/// The hidden shortcut of the dashboard in every window of the program: Ctrl+Shift+D, or with the key that is
/// D on an English keyboard. Other modifiers do not matter. Nothing else receives these keys.
class DashboardShortcut : public QObject {
    Q_OBJECT

public:
    explicit DashboardShortcut(QObject* parent = nullptr);

    static bool matches(const QKeyEvent& event);

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    void pressed();
};

} // namespace ostrelle
