// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DesktopMain.h"

#include "app/DesktopProgram.h"
#include "app/EndingInstance.h"
#include "app/SingleInstance.h"
#include "platform/DesktopColorScheme.h"
#include "platform/InterruptSignals.h"
#include "platform/SystemClock.h"
#include "shell/desktop/DesktopAppearance.h"
#include "shell/toolkit/Icon.h"

#include <QApplication>
#include <QEventLoop>
#include <QTimer>
#include <chrono>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Keeps the first window from changing colours before the user's eyes. Only briefly: a late window is worse.
void waitForAnswer(const DesktopColorScheme& colorScheme) {
    QEventLoop loop;
    QObject::connect(&colorScheme, &DesktopColorScheme::settled, &loop, &QEventLoop::quit);
    QTimer::singleShot(std::chrono::milliseconds(100), &loop, &QEventLoop::quit);
    if (!colorScheme.isSettled()) {
        loop.exec();
    }
}

} // namespace

int runDesktopProgram(int argc, char** argv, const std::function<ServiceEndpoints()>& endpoints) {
    QApplication application(argc, argv);
    QApplication::setApplicationName(u"ostrelle-captions"_s);
    QApplication::setApplicationVersion(QStringLiteral(OSTRELLE_VERSION));
    QApplication::setDesktopFileName(applicationIdentifier);
    QApplication::setQuitOnLastWindowClosed(false); // the delegate decides
    QApplication::setWindowIcon(applicationIcon());

    const AppFolders folders = AppFolders::ofDesktop();
    SingleInstance instance(folders.config);
    SystemClock clock;
    EndingInstance ending(instance, clock);
    if (ending.wait() != SingleInstance::Standing::first) {
        return 0;
    }
    DesktopColorScheme colorScheme; // asks while the parts are made
    DesktopProgram program(folders, endpoints(), [&instance] { instance.close(); });
    waitForAnswer(colorScheme);
    DesktopAppearance appearance(application, colorScheme);
    QObject::connect(&instance, &SingleInstance::startedAgain, &program.delegate(),
                     &AppDelegate::applicationShouldHandleReopen);
    const InterruptSignals interrupts;
    QObject::connect(&interrupts, &InterruptSignals::interrupted, &program.delegate(),
                     [&program] { program.quit(); }); // nobody is there to ask
    program.delegate().applicationDidFinishLaunching();
    return QApplication::exec();
}

} // namespace ostrelle
