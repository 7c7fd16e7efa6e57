// SPDX-License-Identifier: GPL-3.0-or-later
// Makes a small shoot in a folder: RAW files with painted pictures, sidecars as ingest tools write them, a
// JPEG with the same fields inside, and the Code Replacements file of the game.
#include "core/Error.h"
#include "platform/Files.h"
#include "support/DngBuilder.h"
#include "support/JpegBuilder.h"
#include "support/SportsScene.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QString>
#include <QStringList>
#include <cstdio>

namespace {

using namespace Qt::StringLiterals;

/// The fields of an ingest preset, and the stub that it leaves as the caption.
QByteArray sidecar(const QByteArray& caption) {
    return "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n"
           "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">\n"
           " <rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">\n"
           "  <rdf:Description rdf:about=\"\"\n"
           "    xmlns:dc=\"http://purl.org/dc/elements/1.1/\"\n"
           "    xmlns:photoshop=\"http://ns.adobe.com/photoshop/1.0/\"\n"
           "    xmlns:Iptc4xmpCore=\"http://iptc.org/std/Iptc4xmpCore/1.0/xmlns/\"\n"
           "    photoshop:DateCreated=\"2026-10-24T13:12:40-05:00\">\n"
           "   <photoshop:City>Norwick</photoshop:City>\n"
           "   <photoshop:State>Ala.</photoshop:State>\n"
           "   <photoshop:Country>USA</photoshop:Country>\n"
           "   <photoshop:Headline>Norwick Herons vs. Fallow Creek Foxes</photoshop:Headline>\n"
           "   <Iptc4xmpCore:Location>Heron Stadium</Iptc4xmpCore:Location>\n"
           "   <dc:creator><rdf:Seq><rdf:li>A. Photographer</rdf:li></rdf:Seq></dc:creator>\n"
           "   <dc:rights><rdf:Alt><rdf:li xml:lang=\"x-default\">(A. Photographer/Demo "
           "Wire)</rdf:li></rdf:Alt></dc:rights>\n"
           "   <dc:subject><rdf:Bag><rdf:li>football</rdf:li><rdf:li>high "
           "school</rdf:li></rdf:Bag></dc:subject>\n"
           "   <dc:description><rdf:Alt><rdf:li xml:lang=\"x-default\">" +
           caption +
           "</rdf:li></rdf:Alt></dc:description>\n"
           "  </rdf:Description>\n"
           " </rdf:RDF>\n"
           "</x:xmpmeta>\n"
           "<?xpacket end=\"w\"?>";
}

const QByteArray roster = "12\tHerons quarterback Sam Abel\n"
                          "24\tHerons running back Lee Moss\n"
                          "55\tFoxes linebacker Jo Brandt\n"
                          "7\tFoxes wide receiver Max Ito\n";

void makeShoot(const QString& folder) {
    struct Picture {
        QString name;
        std::optional<QByteArray> caption; ///< of its sidecar; nothing for an image that has none
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
            ostrelle::replaceFile(folder + u'/' + picture.name + u".xmp"_s, sidecar(*picture.caption));
        }
    }
    const ostrelle::SportsScene scene(width, height, ++seed);
    ostrelle::replaceFile(
        folder + u"/DEMO_0005.jpg"_s,
        ostrelle::jpegWithXmp(ostrelle::jpegFile(scene.image()), sidecar("Herons vs. Foxes")));
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
