// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/desktop/DashboardShortcut.h"

#include <QCoreApplication>
#include <QKeyEvent>

namespace ostrelle {

DashboardShortcut::DashboardShortcut(QObject* parent) : QObject(parent) {
    QCoreApplication::instance()->installEventFilter(this);
}

bool DashboardShortcut::matches(const QKeyEvent& event) {
    constexpr auto held = Qt::ControlModifier | Qt::ShiftModifier;
    constexpr quint32 physicalD = 32 + 8; // KEY_D of linux/input-event-codes.h, +8 in X11 and Wayland
    return (event.modifiers() & held) == held &&
           (event.key() == Qt::Key_D || event.nativeScanCode() == physicalD);
}

bool DashboardShortcut::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress) {
        return QObject::eventFilter(watched, event);
    }
    const auto* key = static_cast<const QKeyEvent*>(event);
    if (!matches(*key)) {
        return QObject::eventFilter(watched, event);
    }
    if (!key->isAutoRepeat()) {
        Q_EMIT pressed();
    }
    return true;
}

} // namespace ostrelle
