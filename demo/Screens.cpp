// SPDX-License-Identifier: GPL-3.0-or-later
// Writes a picture of every scene in light and dark, for looking at: ostrelle-screens FOLDER. With --show it
// shows the scenes whose names come on standard input, one after the other, and says when each is on show.
#include "shell/Scenes.h"
#include "shell/ScreenShots.h"
#include "shell/toolkit/Theme.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QSocketNotifier>
#include <algorithm>
#include <cstdio>
#include <optional>

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

int showScenes() {
    applyTheme(*qApp, ThemeChoice::light);
    std::optional<GameWorld> world;
    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly)) {
        return 1;
    }
    const QList<Scene> all = scenes();
    QSocketNotifier notifier(fileno(stdin), QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, qApp, [&] {
        const QString name = QString::fromUtf8(input.readLine()).trimmed();
        const auto scene =
            std::find_if(all.begin(), all.end(), [&name](const Scene& one) { return one.name == name; });
        if (scene == all.end()) {
            QCoreApplication::exit(name.isEmpty() ? 0 : 1);
            return;
        }
        world.reset();
        world.emplace();
        scene->in(*world).show();
        QCoreApplication::processEvents();
        std::puts("shown");
        std::fflush(stdout);
    });
    return QCoreApplication::exec();
}

int listScenes() {
    for (const Scene& scene : scenes()) {
        std::puts(qPrintable(scene.name));
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QCoreApplication::setApplicationVersion(QStringLiteral(OSTRELLE_VERSION));
    QApplication::setQuitOnLastWindowClosed(false);
    if (application.arguments().size() != 2) {
        std::fprintf(stderr, "Usage: ostrelle-screens FOLDER | --list | --show\n");
        return 2;
    }
    usePictureFont();
    if (application.arguments().at(1) == u"--list") {
        return listScenes();
    }
    if (application.arguments().at(1) == u"--show") {
        return showScenes();
    }
    return writeAll(application, application.arguments().at(1)) ? 0 : 1;
}
