// SPDX-License-Identifier: GPL-3.0-or-later
// Reads and writes of sidecars. Driven by the script `sidecars` beside this file:
//   bench_sidecars make FOLDER COUNT        writes sidecars as a RAW developer and an ingest tool leave them
//   bench_sidecars read FOLDER              reads caption and context of each
//   bench_sidecars read-exiv2 FOLDER        reads the same fields with the exiv2 library
//   bench_sidecars write FOLDER CAPTION     writes the caption into each
#include "metadata/XMPWriter.h"
#include "platform/Files.h"

#include <QDir>
#include <QStringList>
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <exception>
#include <exiv2/exiv2.hpp>
#include <functional>
#include <optional>

namespace ostrelle {
namespace {

using namespace Qt::StringLiterals;

QByteArray sampleSidecar(int number) {
    QByteArray developSettings;
    for (int setting = 0; setting < 120; ++setting) {
        developSettings += "   crs:Setting" + QByteArray::number(setting) + "=\"" +
                           QByteArray::number(setting * number % 97) + "\"\n";
    }
    return "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n"
           "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">\n"
           " <rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">\n"
           "  <rdf:Description rdf:about=\"\"\n"
           "   xmlns:dc=\"http://purl.org/dc/elements/1.1/\"\n"
           "   xmlns:photoshop=\"http://ns.adobe.com/photoshop/1.0/\"\n"
           "   xmlns:Iptc4xmpCore=\"http://iptc.org/std/Iptc4xmpCore/1.0/xmlns/\"\n"
           "   xmlns:crs=\"http://ns.adobe.com/camera-raw-settings/1.0/\"\n"
           "   photoshop:DateCreated=\"2024-10-26T19:02:33-05:00\"\n" +
           developSettings +
           "  >\n   <photoshop:City>Baton Rouge</photoshop:City>\n   <photoshop:State>La.</photoshop:State>\n"
           "   <photoshop:Country>USA</photoshop:Country>\n"
           "   <photoshop:Headline>Herons vs. Foxes</photoshop:Headline>\n"
           "   <Iptc4xmpCore:Location>Heron Stadium</Iptc4xmpCore:Location>\n"
           "   <dc:subject><rdf:Bag><rdf:li>football</rdf:li>"
           "<rdf:li>college</rdf:li></rdf:Bag></dc:subject>\n"
           "   <dc:rights><rdf:Alt>"
           "<rdf:li xml:lang=\"x-default\">(A. Photographer)</rdf:li></rdf:Alt></dc:rights>\n"
           "   <dc:description><rdf:Alt><rdf:li xml:lang=\"x-default\">Stub " +
           QByteArray::number(number) +
           "</rdf:li></rdf:Alt></dc:description>\n"
           "  </rdf:Description>\n </rdf:RDF>\n</x:xmpmeta>\n<?xpacket end=\"w\"?>";
}

void make(const QString& folder, int count) {
    makeFolder(folder);
    for (int number = 1; number <= count; ++number) {
        replaceFile(u"%1/IMG_%2.xmp"_s.arg(folder, QString::number(number)), sampleSidecar(number));
    }
}

qsizetype readOne(const QString& path) {
    const ImageFacts facts = XMPWriter().readSidecar(path, QTimeZone::utc()).facts;
    return facts.caption.value_or(QString()).size() + facts.context.keywords.size();
}

qsizetype readOneWithExiv2(const QString& path) {
    static constexpr std::array keys = {
        "Xmp.dc.description", "Xmp.photoshop.City",     "Xmp.photoshop.State", "Xmp.photoshop.Country",
        "Xmp.iptc.Location",  "Xmp.photoshop.Headline", "Xmp.dc.subject",      "Xmp.photoshop.DateCreated"};
    const QByteArray bytes = readFile(path, 1 << 20);
    Exiv2::XmpData xmp;
    Exiv2::XmpParser::decode(xmp, bytes.toStdString());
    qsizetype size = 0;
    for (const char* key : keys) {
        const auto found = xmp.findKey(Exiv2::XmpKey(key));
        size += found == xmp.end() ? 0 : static_cast<qsizetype>(found->toString().size());
    }
    return size;
}

void forEach(const QString& folder, const std::function<qsizetype(const QString&)>& work) {
    const QStringList names = QDir(folder).entryList({u"*.xmp"_s}, QDir::Files);
    qsizetype size = 0;
    const auto begin = std::chrono::steady_clock::now();
    for (const QString& name : names) {
        size += work(folder + u'/' + name);
    }
    const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - begin;
    std::printf("%lld files, %.1f ms (%.3f ms each), check %lld\n", static_cast<long long>(names.size()),
                taken.count(), taken.count() / static_cast<double>(std::max<qsizetype>(names.size(), 1)),
                static_cast<long long>(size));
}

int run(const QStringList& arguments) {
    const QString command = arguments.value(1);
    const QString folder = arguments.value(2);
    if (command == u"make") {
        make(folder, arguments.value(3).toInt());
    } else if (command == u"read") {
        forEach(folder, readOne);
    } else if (command == u"read-exiv2") {
        Exiv2::XmpParser::initialize();
        forEach(folder, readOneWithExiv2);
    } else if (command == u"write") {
        const QString caption = arguments.value(3);
        forEach(folder, [&caption](const QString& path) {
            XMPWriter().writeDefaultCaption(caption, path);
            return caption.size();
        });
    } else {
        std::fputs("Usage: bench_sidecars make|read|read-exiv2|write FOLDER [COUNT|CAPTION]\n", stderr);
        return 2;
    }
    return 0;
}

} // namespace
} // namespace ostrelle

int main(int argc, char** argv) {
    QStringList arguments;
    for (int index = 0; index < argc; ++index) {
        arguments.append(QString::fromLocal8Bit(argv[index]));
    }
    try {
        return ostrelle::run(arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_sidecars: %s\n", error.what());
        return 1;
    }
}
