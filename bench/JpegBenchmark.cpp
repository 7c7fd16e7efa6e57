// SPDX-License-Identifier: GPL-3.0-or-later
// Captions inside JPEG files. Driven by the script `jpegs` beside this file:
//   bench_jpegs make FOLDER COUNT [SOURCES]     fills the folder with the decodable pictures of SOURCES, or
//                                               with small painted ones
//   bench_jpegs make-large FILE                 paints a JPEG of 10 megabytes
//   bench_jpegs read FOLDER                     reads caption and context of each
//   bench_jpegs write FILE REPETITIONS          compares a caption write with its minimum: a flushed copy of
//                                               the file, and a decoding at the write's scale
#include "metadata/XMPWriter.h"
#include "metadata/rendition/ExtractError.h"
#include "metadata/rendition/JpegDecoder.h"
#include "platform/Files.h"
#include "standins/JpegBuilder.h"
#include "standins/SportsScene.h"

#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <functional>
#include <stdexcept>
#include <vector>

namespace ostrelle {
namespace {

using namespace Qt::StringLiterals;

constexpr qint64 largestFile = qint64{512} << 20;
constexpr int checkSide = 64; ///< the scale at which a caption write decodes

/// Each read makes its log lines, as for the console, but they are not shown.
class SilentLog : public PlainLog {
public:
    void print(const QString& line) override { m_characters += line.size(); }

private:
    qsizetype m_characters = 0;
};

QList<QByteArray> sourcePictures(const QString& folder) {
    QList<QByteArray> pictures;
    for (const QFileInfo& file : QDir(folder).entryInfoList(QDir::Files, QDir::Name)) {
        try {
            decodeJpeg(file.filePath(), checkSide);
            pictures.append(readFile(file.filePath(), largestFile));
        } catch (const ExtractError&) { // cut to its headers, or damaged on purpose
        }
    }
    return pictures;
}

QList<QByteArray> paintedPictures() {
    QList<QByteArray> pictures;
    for (quint32 seed = 1; seed <= 10; ++seed) {
        pictures.append(jpegFile(SportsScene(600, 400, seed).image()));
    }
    return pictures;
}

void makeFiles(const QString& folder, int count, const QString& sourceFolder) {
    const QList<QByteArray> pictures =
        sourceFolder.isEmpty() ? paintedPictures() : sourcePictures(sourceFolder);
    if (pictures.isEmpty()) {
        throw std::runtime_error("there is no picture to be copied");
    }
    qsizetype size = 0;
    for (int number = 0; number < count; ++number) {
        const QByteArray& picture = pictures[number % pictures.size()];
        replaceFile(u"%1/IMG_%2.jpg"_s.arg(folder, QString::number(number + 1)), picture);
        size += picture.size();
    }
    std::printf("%d files of %lld pictures, %lld kB each\n", count, static_cast<long long>(pictures.size()),
                static_cast<long long>(size / 1024 / count));
}

void makeLarge(const QString& path) {
    const QImage scene = SportsScene(6000, 4000, 7).image();
    QByteArray jpeg;
    JpegOptions options;
    for (options.quality = 80; jpeg.size() < 10'000'000 && options.quality <= 100; ++options.quality) {
        jpeg = jpegFile(scene, options);
    }
    replaceFile(path, jpeg);
}

void readFolder(const QString& folder) {
    const XMPWriter xmp;
    qsizetype size = 0;
    const QStringList names = QDir(folder).entryList({u"*.jpg"_s}, QDir::Files);
    for (const QString& name : names) {
        const QString path = folder + u'/' + name;
        const ImageFacts facts = xmp.readEmbedded(path, QTimeZone::utc()).facts;
        size += facts.caption.value_or(QString()).size() + facts.context.keywords.size();
    }
    std::printf("%lld files, check %lld\n", static_cast<long long>(names.size()),
                static_cast<long long>(size));
}

/// The minimum cost of any safe change to a file: read its bytes, write them elsewhere and flush.
void copyFlushed(const QString& from, const QString& to) {
    const QByteArray bytes = readFile(from, largestFile);
    QFile file(to);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || file.write(bytes) != bytes.size() ||
        ::fsync(file.handle()) != 0) {
        throw std::runtime_error("cannot write " + to.toStdString());
    }
}

double milliseconds(const std::function<void()>& work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
}

/// Runs the three in turn, so that other load on the machine hits them equally.
void compareWrite(const QString& path, int repetitions) {
    const QString copy = path + u".copy"_s;
    SilentLog log;
    std::vector<double> copies;
    std::vector<double> decodings;
    std::vector<double> writes;
    for (int pass = 0; pass < repetitions; ++pass) {
        QFile::remove(copy);
        copies.push_back(milliseconds([&] { copyFlushed(path, copy); }));
        decodings.push_back(milliseconds([&] { decodeJpeg(path, checkSide); }));
        const QString caption = u"Herons quarterback Sam Abel (%1) throws against the Foxes."_s.arg(pass);
        writes.push_back(milliseconds([&] { XMPWriter().writeEmbeddedCaption(caption, path, log); }));
    }
    const double least = median(copies) + median(decodings);
    std::printf("copy, flushed %.1f ms + decoding %.1f ms = %.1f ms; caption write %.1f ms, ratio %.2f\n",
                median(copies), median(decodings), least, median(writes), median(writes) / least);
}

int run(const QStringList& arguments) {
    const QString command = arguments.value(1);
    const QString path = arguments.value(2);
    const int number = arguments.value(3).toInt();
    if (command == u"make" && number > 0) {
        makeFiles(path, number, arguments.value(4));
    } else if (command == u"make-large") {
        makeLarge(path);
    } else if (command == u"read") {
        readFolder(path);
    } else if (command == u"write" && number > 0) {
        compareWrite(path, number);
    } else {
        std::fputs("Usage: bench_jpegs make|make-large|read|write PATH [COUNT [SOURCES]]\n", stderr);
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
        std::fprintf(stderr, "bench_jpegs: %s\n", error.what());
        return 1;
    }
}
