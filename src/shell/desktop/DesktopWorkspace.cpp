// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/desktop/DesktopWorkspace.h"

#include <QApplication>
#include <QDesktopServices>
#include <QWidget>

namespace ostrelle {

using namespace Qt::StringLiterals;

void DesktopWorkspace::openLink(const QUrl& link) {
    if (!QDesktopServices::openUrl(link)) {
        m_log.print(u"[AppDelegate] No program took the link "_s + link.toString());
    }
}

void DesktopWorkspace::bringToFront() {
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        if (window->isVisible() && window->isWindow()) {
            window->raise();
            window->activateWindow();
        }
    }
}

} // namespace ostrelle
