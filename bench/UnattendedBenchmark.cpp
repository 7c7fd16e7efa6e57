// SPDX-License-Identifier: GPL-3.0-or-later
// Auto mode and folder runs on 24-megapixel pictures, as the commands set them up, against a stand-in for the
// model. Driven by the script `unattended` beside this file:
//   bench_unattended make FOLDER RAWS JPEGS   fills the folder
//   bench_unattended at-once FOLDER           captions it and compares with its renditions alone
//   bench_unattended slow FOLDER SECONDS      captions it while the model takes that long to answer
//   bench_unattended folder-at-once FOLDER    the same two with one run over the folder, ten images a request
//   bench_unattended folder-slow FOLDER SECONDS
//   bench_unattended memory FOLDER            captions it and reports the process's peak memory
#include "cli/CommandProgram.h"
#include "core/Error.h"
#include "metadata/ImageMetadata.h"
#include "metadata/facts/ImageKind.h"
#include "pipeline/BatchRun.h"
#include "pipeline/ImageListing.h"
#include "platform/Files.h"
#include "product/ApiKey.h"
#include "standins/DngBuilder.h"
#include "standins/JpegBuilder.h"

#include <QCoreApplication>
#include <QCoroTask>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QHash>
#include <QTemporaryDir>
#include <QThreadPool>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>

#include "../demo/ShootSidecar.h"
#include "Heartbeat.h"
#include "ModelThread.h"
#include "ProcessMemory.h"

namespace ostrelle {
namespace {

using namespace Qt::StringLiterals;

const QString rosterName = u"code-replacements.txt"_s;

/// Two kinds of pictures in turn, each with an ingest tool's metadata and no caption.
void makeImages(const QString& folder, int raws, int jpegs) {
    const SportsScene scene(6000, 4000, 7);
    const QString dng = folder + u"/.24mp"_s;
    replaceFile(dng, dngFile(scene));
    const QByteArray jpeg = jpegWithXmp(jpegFile(scene.image()), shootSidecar({}));
    for (int number = 1; number <= std::max(raws, jpegs); ++number) {
        const QString stem = folder + u"/IMG_%1"_s.arg(number, 4, 10, QChar(u'0'));
        if (number <= raws) { // never rewritten, so one file on disk is enough
            std::filesystem::create_hard_link(dng.toStdString(), (stem + u"R.DNG"_s).toStdString());
            replaceFile(stem + u"R.xmp"_s, shootSidecar({}));
        }
        if (number <= jpegs) {
            replaceFile(stem + u"J.JPG"_s, jpeg);
        }
    }
    replaceFile(folder + u'/' + rosterName, "12\tHerons quarterback Sam Abel\n24\tHerons back Lee Moss\n");
    std::printf("%d RAW files of %lld kB and %d JPEG files of %lld kB, 6000 x 4000 pixels\n", raws,
                QFileInfo(dng).size() / 1024, jpegs, static_cast<long long>(jpeg.size()) / 1024);
}

QStringList imagesIn(const QString& folder) {
    QStringList images;
    for (const QString& name : listImages(folder).images) {
        images.append(folder + u'/' + name);
    }
    return images;
}

/// Empty when there is none.
QString captionOf(const QString& image) {
    return ImageMetadata(image).read(QTimeZone::utc()).facts.caption.value_or(QString());
}

/// Seconds to make the renditions of all images on all cores, with nothing else to do.
double renderAll(const QStringList& images) {
    QElapsedTimer timer;
    timer.start();
    for (const QString& image : images) {
        QThreadPool::globalInstance()->start(
            [image] { RAWPreviewExtractor().extractPreview(image, 1024, isJpegImage(image) ? 0.6 : 0.85); });
    }
    QThreadPool::globalInstance()->waitForDone();
    return static_cast<double>(timer.nsecsElapsed()) / 1e9;
}

Options watching(const QString& folder) {
    Options options;
    options.command = Options::Command::watchFolder;
    options.folder = folder;
    options.roster = folder + u'/' + rosterName;
    return options;
}

AppFolders foldersIn(const QString& home) {
    return {.config = home + u"/config"_s,
            .data = home + u"/data"_s,
            .promptCache = home + u"/prompts"_s,
            .manifest = home + u"/manifest"_s,
            .cache = home + u"/cache"_s,
            .runtime = {}};
}

template <typename Condition>
void wait(const Condition& condition) {
    while (!condition()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

/// How the images of a folder are captioned.
enum class Course {
    autoMode,  ///< by the watch command, image by image
    folderRun, ///< by one run, ten images a request
};

/// A command on a folder, from its start until each image is finished.
class UnattendedRun {
public:
    UnattendedRun(const QString& folder, Course course, std::chrono::milliseconds delay)
        : m_folder(folder)
        , m_course(course)
        , m_images(imagesIn(folder))
        , m_model(delay)
        , m_program(watching(folder), foldersIn(m_home.path()), {.model = m_model.url()}) {
        if (std::ranges::any_of(m_images, [](const QString& image) { return !captionOf(image).isEmpty(); })) {
            throw Error(u"The folder has images with captions. It needs to be made anew for each run."_s);
        }
        m_program.defaults.set(apiKeyName, ModelThread::key());
        Analyzer& analyzer = m_program.captions.analyzer;
        QObject::connect(&analyzer, &Analyzer::imageFinished, &analyzer,
                         [this](const ImageOutcome& report) { m_reports[report.file].append(report); });
    }

    void execute() {
        QElapsedTimer timer;
        const Heartbeat heartbeat;
        timer.start();
        if (m_course == Course::autoMode) {
            m_program.captions.autoMode.updateAutoMode(true, SourceType::local, m_folder);
            wait([this] { return m_reports.size() == m_images.size(); });
        } else {
            const auto folderRun = m_program.captions.analyzer.recaptionFolder(FolderImages::all);
            wait([&folderRun] { return folderRun.isReady(); });
        }
        m_seconds = static_cast<double>(timer.nsecsElapsed()) / 1e9;
        const QCoro::Task<bool> finished = m_program.finish();
        wait([&finished] { return finished.isReady(); });
        printStalls(heartbeat);
        printOutcome();
    }

    qsizetype images() const { return m_images.size(); }
    qsizetype requests() const {
        return m_course == Course::autoMode ? images()
                                            : (images() + BatchRun::mostImages - 1) / BatchRun::mostImages;
    }
    /// From the start of auto mode to the last caption.
    double seconds() const { return m_seconds; }
    double modelSeconds() { return m_model.seconds(); }

private:
    static void printStalls(const Heartbeat& heartbeat);
    void printOutcome();
    qsizetype wellCaptioned() const;
    bool isWellCaptioned(const QString& image) const;

    QString m_folder;
    Course m_course;
    QStringList m_images;
    QTemporaryDir m_home;
    ModelThread m_model;
    CommandProgram m_program;
    QHash<QString, QList<ImageOutcome>> m_reports; ///< by file
    double m_seconds = 0;
};

void printRow(const QString& figure, const QString& measured, const QString& target = {},
              std::optional<bool> isMet = {}) {
    const QString verdict = !isMet ? QString() : *isMet ? u"met"_s : u"MISSED"_s;
    std::printf("  %-40s %26s   %-26s %s\n", qPrintable(figure), qPrintable(measured), qPrintable(target),
                qPrintable(verdict));
}

QString number(double value, int decimals, const QString& unit) {
    return QString::number(value, 'f', decimals) + u' ' + unit;
}

void UnattendedRun::printStalls(const Heartbeat& heartbeat) {
    const double share = static_cast<double>(heartbeat.late()) / std::max(heartbeat.ticks(), 1);
    printRow(
        u"ticks of the main thread over 16 ms late"_s,
        u"%1 of %2, %3"_s.arg(heartbeat.late()).arg(heartbeat.ticks()).arg(number(share * 100, 3, u"%"_s)),
        u"at most 0.1 %"_s, share <= Heartbeat::share);
    printRow(u"the worst of them"_s, number(heartbeat.worst(), 1, u"ms"_s));
    printRow(u"the main thread's longest turn"_s, number(heartbeat.longestTurn(), 1, u"ms"_s));
}

void UnattendedRun::printOutcome() {
    const qsizetype good = wellCaptioned();
    printRow(u"images with just one caption"_s, u"%1, %2 requests"_s.arg(good).arg(m_model.requests()),
             u"%1, %2 requests"_s.arg(images()).arg(requests()),
             good == images() && m_model.requests() == requests());
    const StatusStore& status = m_program.captions.status;
    printRow(u"the status: processed, failed, in the works"_s,
             u"%1, %2, %3"_s.arg(status.processed())
                 .arg(status.failed())
                 .arg(status.isProcessing() ? u"yes"_s : u"no"_s),
             u"%1, 0, no"_s.arg(m_images.size()),
             status.processed() == m_images.size() && status.failed() == 0 && !status.isProcessing());
}

qsizetype UnattendedRun::wellCaptioned() const {
    return std::ranges::count_if(m_images, [this](const QString& image) { return isWellCaptioned(image); });
}

/// True when the image has exactly one report and its caption is in the file.
bool UnattendedRun::isWellCaptioned(const QString& image) const {
    const QList<ImageOutcome> reports = m_reports.value(image);
    return reports.size() == 1 && reports.first().kind == OutcomeKind::captioned &&
           !reports.first().captionAfter->isEmpty() && captionOf(image) == reports.first().captionAfter;
}

void captionAtOnce(const QString& folder, Course course) {
    const QStringList images = imagesIn(folder);
    std::printf("\n%lld images, the model answers at once:\n", static_cast<long long>(images.size()));
    const auto perSecond = [&images](double seconds) {
        return number(static_cast<double>(images.size()) / seconds, 2, u"images/s"_s);
    };
    const double before = processorSeconds(CLOCK_PROCESS_CPUTIME_ID);
    const double rendered = renderAll(images);
    const double between = processorSeconds(CLOCK_PROCESS_CPUTIME_ID);
    UnattendedRun run(folder, course, std::chrono::milliseconds(0));
    run.execute();
    const double after = processorSeconds(CLOCK_PROCESS_CPUTIME_ID);
    const double share = rendered / run.seconds();
    printRow(u"renditions alone"_s, perSecond(rendered));
    printRow(u"captions"_s, u"%1, %2"_s.arg(perSecond(run.seconds()), number(share * 100, 1, u"%"_s)),
             u"at least 85 %"_s, share >= 0.85);
    printRow(u"processor time of the renditions alone"_s, number(between - before, 1, u"s"_s));
    printRow(u"of the captions"_s, number(after - between, 1, u"s"_s));
    printRow(u"the stand-in's part of it"_s, number(run.modelSeconds(), 1, u"s"_s));
}

void captionSlowly(const QString& folder, Course course, int secondsPerAnswer) {
    const int requestsAtOnce = course == Course::autoMode ? 6 : 1;
    UnattendedRun run(folder, course, std::chrono::seconds(secondsPerAnswer));
    std::printf("\n%lld images, the model takes %d s for an answer:\n", static_cast<long long>(run.images()),
                secondsPerAnswer);
    run.execute();
    const double least = static_cast<double>(run.requests() * secondsPerAnswer) / requestsAtOnce;
    printRow(u"time of all captions"_s, number(run.seconds(), 1, u"s"_s));
    printRow(
        u"above the requests alone, %1 at a time"_s.arg(requestsAtOnce),
        u"%1 of %2"_s.arg(number((run.seconds() / least - 1) * 100, 1, u"%"_s), number(least, 1, u"s"_s)),
        u"at most 3 %"_s, run.seconds() <= least * 1.03);
}

void captionForMemory(const QString& folder) {
    UnattendedRun run(folder, Course::autoMode, std::chrono::milliseconds(0));
    std::printf("\n%lld images handed over at once:\n", static_cast<long long>(run.images()));
    run.execute();
    printRow(u"peak memory of the process"_s, number(processMegabytes("VmHWM"), 0, u"MB"_s));
}

int run(const QStringList& arguments) {
    const QString command = arguments.value(1);
    const QString folder = QDir(arguments.value(2)).absolutePath();
    if (command == u"make") {
        makeImages(folder, arguments.value(3).toInt(), arguments.value(4).toInt());
    } else if (command == u"at-once") {
        captionAtOnce(folder, Course::autoMode);
    } else if (command == u"slow") {
        captionSlowly(folder, Course::autoMode, arguments.value(3).toInt());
    } else if (command == u"folder-at-once") {
        captionAtOnce(folder, Course::folderRun);
    } else if (command == u"folder-slow") {
        captionSlowly(folder, Course::folderRun, arguments.value(3).toInt());
    } else if (command == u"memory") {
        captionForMemory(folder);
    } else {
        std::fputs("Usage: bench_unattended make|at-once|slow|folder-at-once|folder-slow|memory FOLDER "
                   "[RAWS JPEGS | SECONDS]\n",
                   stderr);
        return 2;
    }
    return 0;
}

} // namespace
} // namespace ostrelle

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    try {
        return ostrelle::run(QCoreApplication::arguments());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_unattended: %s\n", error.what());
        return 1;
    }
}
