// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DesktopMain.h"

#include "app/DesktopProgram.h"
#include "app/SingleInstance.h"
#include "shell/Icon.h"
#include "shell/Theme.h"

#include <QApplication>

namespace ostrelle {

using namespace Qt::StringLiterals;

int runDesktopProgram(int argc, char** argv, const std::function<ServiceEndpoints()>& endpoints) {
    QApplication application(argc, argv);
    QApplication::setApplicationName(u"ostrelle-captions"_s);
    QApplication::setApplicationDisplayName(u"Ostrelle Captions"_s);
    QApplication::setApplicationVersion(QStringLiteral(OSTRELLE_VERSION));
    QApplication::setDesktopFileName(applicationIdentifier);
    QApplication::setQuitOnLastWindowClosed(false); // the delegate decides
    QApplication::setWindowIcon(applicationIcon());
    applyTheme(application);

    const AppFolders folders = AppFolders::ofDesktop();
    SingleInstance instance(folders.config);
    if (!instance.isFirst()) {
        return 0;
    }
    DesktopProgram program(folders, endpoints());
    QObject::connect(&instance, &SingleInstance::startedAgain, &program.delegate(),
                     &AppDelegate::applicationShouldHandleReopen);
    program.delegate().applicationDidFinishLaunching();
    return QApplication::exec();
}

} // namespace ostrelle
