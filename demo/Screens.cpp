// SPDX-License-Identifier: GPL-3.0-or-later
// Writes a picture of every scene in light and dark, for looking at: ostrelle-screens FOLDER.
#include "shell/Scenes.h"
#include "shell/ScreenShots.h"
#include "shell/toolkit/Theme.h"

#include <QApplication>
#include <QDir>
#include <cstdio>

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace {

bool writeAll(QApplication& application, const QString& folder) {
    bool isWritten = QDir().mkpath(folder);
    for (const auto& [theme, name] :
         {std::pair(ThemeChoice::light, u"light"_s), std::pair(ThemeChoice::dark, u"dark"_s)}) {
        applyTheme(application, theme);
        for (const Scene& scene : scenes()) {
            GameWorld world;
            const QString path = u"%1/%2-%3.png"_s.arg(folder, scene.name, name);
            if (!screenshot(scene.in(world)).save(path)) {
                std::fprintf(stderr, "ostrelle-screens: cannot write %s\n", qPrintable(path));
                isWritten = false;
            }
        }
    }
    return isWritten;
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QCoreApplication::setApplicationVersion(QStringLiteral(OSTRELLE_VERSION));
    QApplication::setQuitOnLastWindowClosed(false);
    if (application.arguments().size() != 2) {
        std::fprintf(stderr, "Usage: ostrelle-screens FOLDER\n");
        return 2;
    }
    usePictureFont();
    return writeAll(application, application.arguments().at(1)) ? 0 : 1;
}
