// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DesktopMain.h"

#include "app/Arguments.h"
#include "app/DesktopProgram.h"
#include "app/EndingInstance.h"
#include "app/SingleInstance.h"
#include "core/Error.h"
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
    const QByteArray activationToken = qgetenv("XDG_ACTIVATION_TOKEN"); // which Qt uses up
    QApplication application(argc, argv); // which takes its own options from the arguments
    StartRequest request;
    try {
        request = startRequest(argc, argv);
    } catch (const Error& error) {
        ConsoleLog(stderr).print(u"ostrelle-captions: "_s + error.localizedDescription());
        return 2;
    }
    request.activationToken = activationToken;
    QApplication::setApplicationName(u"ostrelle-captions"_s);
    QApplication::setApplicationVersion(QStringLiteral(OSTRELLE_VERSION));
    QApplication::setDesktopFileName(applicationIdentifier);
    QApplication::setQuitOnLastWindowClosed(false); // the delegate decides
    QApplication::setWindowIcon(applicationIcon());

    const AppFolders folders = AppFolders::ofDesktop();
    SingleInstance instance(folders.config, request);
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
    program.delegate().applicationDidFinishLaunching(request);
    return QApplication::exec();
}

} // namespace ostrelle
