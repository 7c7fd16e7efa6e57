// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/AppDelegate.h"
#include "shell/ShellFixture.h"
#include "support/Await.h"

#include <QApplication>

namespace ostrelle {

/// The program with its windows, over fakes of the outside world.
struct ProgramWorld : ShellWorld {
    ~ProgramWorld() { await(delegate.finished()); }

    void start(bool hasCompletedOnboarding = true) {
        defaults.set(QStringLiteral("hasCompletedOnboarding"), hasCompletedOnboarding);
        delegate.applicationDidFinishLaunching();
    }
    /// The window with this title, shown or hidden.
    static QWidget* window(const QString& title) {
        const QWidgetList windows = QApplication::topLevelWidgets();
        for (QWidget* window : windows) {
            if (window->windowTitle() == title) {
                return window;
            }
        }
        return nullptr;
    }

    int quits = 0;
    AppDelegate delegate{parts, program.autoMode, [this] {
                             ++quits;
                             delegate.applicationWillTerminate();
                         }};
};

} // namespace ostrelle
