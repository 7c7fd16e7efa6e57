// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/AppDelegate.h"
#include "shell/ShellFixture.h"
#include "support/Await.h"

#include <QApplication>

namespace ostrelle {

/// The program with its windows, over fakes of the outside world.
struct ProgramWorld : ShellWorld {
    class NoSource : public RemoteSource {
    public:
        void start() override {}
        void stop() override {}
    };

    ~ProgramWorld() { await(delegate.finished()); }

    void start(bool hasCompletedOnboarding = true) {
        defaults.set(QStringLiteral("hasCompletedOnboarding"), hasCompletedOnboarding);
        delegate.applicationDidFinishLaunching();
    }
    /// The window of this title, whether it is to be seen or not.
    static QWidget* window(const QString& title) {
        const QWidgetList windows = QApplication::topLevelWidgets();
        for (QWidget* window : windows) {
            if (window->windowTitle() == title) {
                return window;
            }
        }
        return nullptr;
    }

    ProcessingTracker tracker{clock};
    NoSource remote;
    LocalFolderScan scan{
        {.settings = settings,
         .manifest = manifest,
         .tracker = tracker,
         .access = access,
         .turns = turns,
         .threads = threads,
         .clock = clock,
         .log = console,
         .captioning = [this](ImageRequest request) { return analyzer.captionWatched(request); }}};
    AutoModeController autoMode{{.settings = settings,
                                 .status = status,
                                 .defaults = defaults,
                                 .scan = scan,
                                 .remote = remote,
                                 .notifications = notifications,
                                 .threads = threads,
                                 .clock = clock,
                                 .log = console}};
    int quits = 0;
    AppDelegate delegate{parts, autoMode, [this] {
                             ++quits;
                             delegate.applicationWillTerminate();
                         }};
};

} // namespace ostrelle
