// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DesktopMain.h"

#include "app/Arguments.h"
#include "app/DesktopProgram.h"
#include "app/EndingInstance.h"
#include "app/SingleInstance.h"
#include "platform/ConsoleLog.h"
#include "platform/DesktopColorScheme.h"
#include "platform/InterruptSignals.h"
#include "platform/SystemClock.h"
#include "shell/desktop/DesktopAppearance.h"
#include "shell/toolkit/Icon.h"

#include <QApplication>
#include <QEventLoop>
#include <QTimer>
#include <chrono>
#include <optional>

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
    if (const std::optional<int> status = answerArguments(argc, argv)) {
        return *status;
    }
    QApplication application(argc, argv); // which takes its own options from the arguments
    const StartFiles start = startFiles(argc, argv);
    if (!start.error.isEmpty()) {
        ConsoleLog(stderr).print(u"ostrelle-captions: "_s + start.error);
        return 2;
    }
    QApplication::setApplicationName(u"ostrelle-captions"_s);
    QApplication::setApplicationVersion(QStringLiteral(OSTRELLE_VERSION));
    QApplication::setDesktopFileName(applicationIdentifier);
    QApplication::setQuitOnLastWindowClosed(false); // the delegate decides
    QApplication::setWindowIcon(applicationIcon());

    const AppFolders folders = AppFolders::ofDesktop();
    SingleInstance instance(folders.config, start.files);
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
    QObject::connect(&instance, &SingleInstance::filesGiven, &program.delegate(), &AppDelegate::openFiles);
    const InterruptSignals interrupts;
    QObject::connect(&interrupts, &InterruptSignals::interrupted, &program.delegate(),
                     [&program] { program.quit(); }); // nobody is there to ask
    program.delegate().applicationDidFinishLaunching();
    if (!start.files.isEmpty()) {
        program.delegate().openFiles(start.files);
    }
    return QApplication::exec();
}

} // namespace ostrelle
