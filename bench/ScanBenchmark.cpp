// SPDX-License-Identifier: GPL-3.0-or-later
// Scans a folder of 10,000 images and compares with a bare listing and a stat of each. Also measures how long
// a scan blocks the event loop. Usage: bench_scan [REPETITIONS]
#include "pipeline/ImageListing.h"
#include "platform/ConsoleLog.h"
#include "platform/Files.h"
#include "platform/PathReferences.h"
#include "platform/SystemClock.h"
#include "standins/JpegBuilder.h"
#include "standins/MemoryDefaults.h"
#include "standins/MemorySecrets.h"
#include "standins/SportsScene.h"
#include "transfer/LocalFolderScan.h"

#include <dirent.h>
#include <sys/stat.h>

#include <QCoreApplication>
#include <QCoroTask>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>
#include <functional>

namespace ostrelle {
namespace {

using namespace Qt::StringLiterals;

constexpr int imageCount = 10'000;
constexpr int jpegCount = 2'000;

/// A packet as an ingest tool writes it, with this caption.
QByteArray packet(const QByteArray& caption) {
    QByteArray attributes;
    for (int number = 0; number < 40; ++number) {
        attributes += "    crs:Setting" + QByteArray::number(number) + "=\"0.25\"\n";
    }
    return "<x:xmpmeta xmlns:x='adobe:ns:meta/'>"
           "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>\n"
           "<rdf:Description rdf:about='' xmlns:dc='http://purl.org/dc/elements/1.1/'\n"
           "    xmlns:crs='http://ns.adobe.com/camera-raw-settings/1.0/'\n" +
           attributes + "><dc:description><rdf:Alt><rdf:li xml:lang='x-default'>" + caption +
           "</rdf:li></rdf:Alt></dc:description></rdf:Description></rdf:RDF></x:xmpmeta>";
}

void write(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        qFatal("cannot write the pictures");
    }
}

void makeImages(const QString& folder, const QByteArray& caption) {
    const QByteArray jpeg = jpegWithXmp(jpegFile(SportsScene(640, 427, 1).image()), packet(caption));
    for (int number = 0; number < imageCount; ++number) {
        const QString stem = folder + u"/IMG_%1"_s.arg(number, 5, 10, QChar(u'0'));
        if (number < jpegCount) {
            write(stem + u".JPG"_s, jpeg);
            continue;
        }
        write(stem + u".CR2"_s, "picture");
        if (!caption.isEmpty()) {
            write(stem + u".xmp"_s, packet(caption));
        }
    }
}

void writeManifest(const QString& path, const QString& folder) {
    QJsonArray entries;
    for (const QString& name : listImages(folder).images) {
        const ProcessedFileEntry entry = ProcessedFileEntry::of(folder + u'/' + name).value();
        entries.append(QJsonObject{{u"filename"_s, entry.filename},
                                   {u"fileSize"_s, entry.fileSize},
                                   {u"modificationDate"_s, entry.modificationDate}});
    }
    makeFolder(QFileInfo(path).path());
    write(path, QJsonDocument(entries).toJson(QJsonDocument::Compact));
}

/// Milliseconds to list the folder and read the attributes of each image.
double bareListing(const QString& folder) {
    QElapsedTimer timer;
    timer.start();
    const QByteArray path = QFile::encodeName(folder) + '/';
    DIR* open = ::opendir(path.constData());
    qint64 size = 0;
    while (const dirent* entry = ::readdir(open)) {
        const QByteArray name(entry->d_name);
        struct stat status{};
        if (!name.endsWith(".xmp") && ::stat((path + name).constData(), &status) == 0) {
            size += status.st_size;
        }
    }
    ::closedir(open);
    return size == 0 ? 0 : static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

/// How late an event loop's timers are: that is how long something else has blocked its thread.
class Lateness {
public:
    Lateness() {
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] {
            m_worst = std::max(m_worst, static_cast<double>(m_since.nsecsElapsed()) / 1e6 - period);
            m_since.start();
        });
        m_since.start();
        m_timer.start(period);
    }
    double worst() const { return m_worst; }

private:
    static constexpr int period = 5; // milliseconds
    QTimer m_timer;
    QElapsedTimer m_since;
    double m_worst = 0;
};

QCoro::Task<ImageOutcome> failToCaption(ImageRequest) {
    co_return {};
}

struct Measured {
    double milliseconds = 0;
    double held = 0; ///< the longest delay of the event loop
};

/// One scan of the folder, with everything it queues.
Measured scanOnce(const QString& folder, const QString& manifestPath) {
    SystemClock clock;
    std::FILE* sink = std::fopen("/dev/null", "w");
    ConsoleLog log(sink);
    MemoryDefaults defaults;
    MemorySecrets secrets;
    PathReferences references;
    UnsandboxedAccess access;
    AppEvents events;
    FolderThreads threads;
    KeychainHelper keychain(secrets, log);
    SettingsStore settings(defaults, keychain, references, log);
    ProcessedFilesManifest manifest(manifestPath, threads, clock, log, events);
    ProcessingTracker tracker(clock);
    CaptionTurns turns;
    LocalFolderScan scan({.settings = settings,
                          .manifest = manifest,
                          .tracker = tracker,
                          .access = access,
                          .turns = turns,
                          .threads = threads,
                          .clock = clock,
                          .log = log,
                          .captioning = failToCaption});
    QCoreApplication::processEvents();
    const Lateness lateness;
    QElapsedTimer timer;
    timer.start();
    const QCoro::Task<> scanned = scan.scanFolder(folder);
    while (!scanned.isReady()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    const Measured measured{static_cast<double>(timer.nsecsElapsed()) / 1e6, lateness.worst()};
    std::fclose(sink);
    return measured;
}

void report(const char* name, int repetitions, const std::function<Measured()>& run) {
    run(); // to fill the page cache
    std::vector<double> times;
    double held = 0;
    for (int repetition = 0; repetition < repetitions; ++repetition) {
        const Measured measured = run();
        times.push_back(measured.milliseconds);
        held = std::max(held, measured.held);
    }
    std::sort(times.begin(), times.end());
    std::printf("%-44s least %8.1f ms   median %8.1f ms   event loop held %5.1f ms\n", name, times.front(),
                times[times.size() / 2], held);
}

void run(int repetitions) {
    const QTemporaryDir data;
    const QString captioned = data.filePath(u"captioned"_s);
    const QString fresh = data.filePath(u"new"_s);
    const QString known = data.filePath(u"known/processed_files.json"_s);
    const QString unknown = data.filePath(u"unknown/processed_files.json"_s);
    makeFolder(captioned);
    makeFolder(fresh);
    makeImages(captioned, "Lexington Falcons linebacker Sam Abel celebrates a touchdown in the rain.");
    makeImages(fresh, "");
    writeManifest(known, captioned);
    report("list 10,000 images and stat each", repetitions,
           [&] { return Measured{bareListing(captioned), 0}; });
    report("scan, all in the manifest", repetitions, [&] { return scanOnce(captioned, known); });
    report("scan, all with captions, none in the manifest", repetitions,
           [&] { return scanOnce(captioned, unknown); });
    report("scan, none with a caption, all queued", 1, [&] { return scanOnce(fresh, unknown); });
}

} // namespace
} // namespace ostrelle

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    ostrelle::run(argc > 1 ? std::atoi(argv[1]) : 9);
}
