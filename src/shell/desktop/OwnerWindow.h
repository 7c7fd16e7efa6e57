// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QApplication>
#include <QDialog>

namespace ostrelle {

/// The window that a new dialog belongs to: the one in use, but no dialog, which may just be closing.
inline QWidget* ownerWindow() {
    QWidget* window = QApplication::activeWindow();
    while (window != nullptr && qobject_cast<QDialog*>(window) != nullptr) {
        window = window->parentWidget() != nullptr ? window->parentWidget()->window() : nullptr;
    }
    return window;
}

} // namespace ostrelle
