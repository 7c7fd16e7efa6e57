// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QApplication>
#include <QDialog>

namespace ostrelle {

/// The owner of a new dialog: the active window, but not a dialog, which may be about to close.
inline QWidget* ownerWindow() {
    QWidget* window = QApplication::activeWindow();
    while (window != nullptr && qobject_cast<QDialog*>(window) != nullptr) {
        window = window->parentWidget() != nullptr ? window->parentWidget()->window() : nullptr;
    }
    return window;
}

} // namespace ostrelle
