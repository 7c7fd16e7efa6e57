// SPDX-License-Identifier: GPL-3.0-or-later
// Compares renditions with the decoders under them. Driven by the script `renditions` beside this file:
//   bench_renditions make-pictures FOLDER      writes 24-megapixel pictures: JPEG (one to be turned), DNG, a
//                                              CR3 and a NEF that have only a preview of that size
//   bench_renditions render FILE RESULT        makes one rendition and reports the process's peak memory
//   bench_renditions decode-half FILE          the same for LibRaw's own decode at half size
//   bench_renditions FOLDER [benchmark flags]  compares them within one process
#include "metadata/rendition/AreaScaler.h"
#include "metadata/rendition/RAWPreviewExtractor.h"
#include "standins/DngBuilder.h"
#include "standins/JpegBuilder.h"
#include "standins/RawBuilder.h"

#include <benchmark/benchmark.h>
#include <libraw/libraw.h>
#include <sys/resource.h>

#include <QFile>
#include <QImage>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <stdexcept>
#include <utility>

namespace ostrelle {
namespace {

using namespace Qt::StringLiterals;

void write(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        throw std::runtime_error("cannot write " + path.toStdString());
    }
}

void makePictures(const QString& folder) {
    const SportsScene scene(6000, 4000, 7);
    const QByteArray jpeg = jpegFile(scene.image());
    write(folder + u"/24mp.jpg"_s, jpeg);
    write(folder + u"/24mp.dng"_s, dngFile(scene));
    JpegOptions portrait;
    portrait.orientation = 6;
    write(folder + u"/portrait.jpg"_s, jpegFile(scene.image(), portrait));
    // With raw data as large as that of a camera.
    for (const auto& [name, kind] :
         {std::pair{u"/24mp.cr3"_s, RawKind::cr3}, {u"/24mp.nef"_s, RawKind::nef}}) {
        write(folder + name, rawFile(kind, {.preview = jpeg}).leftJustified(25'000'000, '\x5A'));
    }
}

QByteArray render(const QString& path, Orientation orientation = Orientation::asStored) {
    return RAWPreviewExtractor().extractPreview(path, 1024, 0.6, orientation).jpeg;
}

/// LibRaw alone, as in its samples: half the size, an 8-bit picture in memory.
void decodeHalf(const QByteArray& path) {
    const auto raw = std::make_unique<LibRaw>();
    raw->imgdata.params.half_size = 1;
    raw->imgdata.params.use_camera_wb = 1;
    raw->imgdata.params.user_flip = 0;
    if (raw->open_file(path.constData()) != LIBRAW_SUCCESS || raw->unpack() != LIBRAW_SUCCESS ||
        raw->dcraw_process() != LIBRAW_SUCCESS) {
        throw std::runtime_error("cannot decode");
    }
    int status = LIBRAW_SUCCESS;
    libraw_processed_image_t* picture = raw->dcraw_make_mem_image(&status);
    benchmark::DoNotOptimize(picture);
    LibRaw::dcraw_clear_mem(picture);
}

void reportPeakMemory() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("peak %ld kB\n", usage.ru_maxrss);
}

/// A picture as the block scaling of a 24-megapixel JPEG leaves it.
QImage decodedPicture() {
    return SportsScene(1500, 1000, 7).image();
}

void scaleByArea(benchmark::State& state) {
    const QImage picture = decodedPicture();
    for ([[maybe_unused]] const auto& pass : state) {
        AreaScaler<std::uint8_t> scaler({1500, 1000}, {1024, 683}, 3);
        for (int y = 0; y < picture.height(); ++y) {
            scaler.addRow(picture.constScanLine(y));
        }
        benchmark::DoNotOptimize(scaler.take());
    }
}

void scaleByQt(benchmark::State& state) {
    const QImage picture = decodedPicture();
    for ([[maybe_unused]] const auto& pass : state) {
        benchmark::DoNotOptimize(picture.scaled(1024, 683, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                                     .convertToFormat(QImage::Format_RGB888));
    }
}

void registerBenchmarks(const QString& folder) {
    const auto add = [](const char* name, const auto& function) {
        benchmark::RegisterBenchmark(name,
                                     [function](benchmark::State& state) {
                                         for ([[maybe_unused]] const auto& pass : state) {
                                             function();
                                         }
                                     })
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    };
    const QString jpeg = folder + u"/24mp.jpg"_s;
    const QString dng = folder + u"/24mp.dng"_s;
    add("rendition of a JPEG", [jpeg] { benchmark::DoNotOptimize(render(jpeg)); });
    add("rendition of a DNG", [dng] { benchmark::DoNotOptimize(render(dng)); });
    const QString cr3 = folder + u"/24mp.cr3"_s;
    const QString nef = folder + u"/24mp.nef"_s;
    add("rendition of a CR3's preview", [cr3] { benchmark::DoNotOptimize(render(cr3)); });
    add("rendition of a NEF's preview", [nef] { benchmark::DoNotOptimize(render(nef)); });
    const QString portrait = folder + u"/portrait.jpg"_s;
    add("rendition of a portrait, as stored", [portrait] { benchmark::DoNotOptimize(render(portrait)); });
    add("rendition of a portrait, upright",
        [portrait] { benchmark::DoNotOptimize(render(portrait, Orientation::upright)); });
    add("LibRaw's decode at half size", [path = QFile::encodeName(dng)] { decodeHalf(path); });
    benchmark::RegisterBenchmark("scaling by area", scaleByArea)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("scaling by QImage", scaleByQt)->Unit(benchmark::kMillisecond);
}

int run(int argc, char** argv) {
    const auto argument = [argc, argv](int index) {
        return index < argc ? QFile::decodeName(argv[index]) : QString();
    };
    const QString command = argument(1);
    if (command == u"make-pictures"_s) {
        makePictures(argument(2));
    } else if (command == u"render"_s) {
        write(argument(3), render(argument(2)));
        reportPeakMemory();
    } else if (command == u"decode-half"_s) {
        decodeHalf(QFile::encodeName(argument(2)));
        reportPeakMemory();
    } else {
        registerBenchmarks(command);
        benchmark::Initialize(&argc, argv);
        benchmark::RunSpecifiedBenchmarks();
    }
    return 0;
}

} // namespace
} // namespace ostrelle

int main(int argc, char** argv) {
    try {
        return ostrelle::run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
