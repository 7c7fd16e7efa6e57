// SPDX-License-Identifier: GPL-3.0-or-later
// Makes a small shoot in a folder: RAW files with painted pictures, sidecars as ingest tools write them, a
// JPEG with the same fields inside, and the Code Replacements file of the game.
#include "core/Error.h"
#include "platform/Files.h"
#include "standins/DngBuilder.h"
#include "standins/JpegBuilder.h"
#include "standins/SportsScene.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QString>
#include <QStringList>
#include <cstdio>
#include <optional>

#include "ShootSidecar.h"

namespace {

using namespace Qt::StringLiterals;

const QByteArray roster = "12\tHerons quarterback Sam Abel\n"
                          "24\tHerons running back Lee Moss\n"
                          "55\tFoxes linebacker Jo Brandt\n"
                          "7\tFoxes wide receiver Max Ito\n";

void makeShoot(const QString& folder) {
    struct Picture {
        QString name;
        std::optional<QByteArray> caption; ///< of its sidecar; nothing for an image without one
        int orientation;
    };
    const Picture pictures[] = {
        {u"DEMO_0001"_s, "Herons vs. Foxes", 1},
        {u"DEMO_0002"_s, std::nullopt, 1},
        {u"DEMO_0003"_s, "", 6},
        {u"DEMO_0004"_s, "Sam Abel throws a pass against the Foxes in the first quarter on Saturday.", 1},
    };
    constexpr int width = 3000;
    constexpr int height = 2000;
    ostrelle::makeFolder(folder);
    std::uint32_t seed = 0;
    for (const Picture& picture : pictures) {
        ++seed;
        const ostrelle::SportsScene scene(width, height, seed);
        ostrelle::DngOptions options;
        options.orientation = picture.orientation;
        options.seed = seed;
        ostrelle::replaceFile(folder + u'/' + picture.name + u".dng"_s, ostrelle::dngFile(scene, options));
        if (picture.caption) {
            ostrelle::replaceFile(folder + u'/' + picture.name + u".xmp"_s,
                                  ostrelle::shootSidecar(*picture.caption));
        }
    }
    const ostrelle::SportsScene scene(width, height, ++seed);
    ostrelle::replaceFile(
        folder + u"/DEMO_0005.jpg"_s,
        ostrelle::jpegWithXmp(ostrelle::jpegFile(scene.image()), ostrelle::shootSidecar("Herons vs. Foxes")));
    ostrelle::replaceFile(folder + u"/code-replacements.txt"_s, roster);
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 2) {
        std::fputs("Usage: ostrelle-demo-shoot FOLDER\n", stderr);
        return 2;
    }
    try {
        makeShoot(arguments[1]);
    } catch (const ostrelle::Error& error) {
        std::fprintf(stderr, "ostrelle-demo-shoot: %s\n", error.what());
        return 1;
    }
    return 0;
}
