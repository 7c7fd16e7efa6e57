// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/LocalFolderScan.h"

#include "core/Attempt.h"
#include "core/OnThreadPool.h"
#include "pipeline/FolderTidying.h"
#include "pipeline/ImageListing.h"
#include "platform/FileError.h"

#include <QDir>
#include <QList>
#include <QThreadPool>
#include <cerrno>
#include <chrono>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// How many images are looked at or read at a time: few enough that the first need not wait long for its
/// caption, and that deciding on them does not block the event loop for long.
constexpr qsizetype looksAtATime = 512;
constexpr qsizetype readingsAtATime = 64;

QString troubleOf(const QString& folder, const std::exception_ptr& failure) {
    const auto error = failureAs<FileError>(failure);
    const bool isGone = error && (error->code() == ENOENT || error->code() == ENOTDIR);
    return isGone ? u"The watch folder is not there: "_s + folder
                  : u"The watch folder cannot be read: "_s + wordsOf(failure);
}

struct ScanCounts {
    int toProcess = 0;
    int processing = 0;
    int previouslyProcessed = 0;
    int haveCaptions = 0;
    int noSidecar = 0;
};

} // namespace

struct LocalFolderScan::Scan {
    QString folder;
    Overtaking::Mark mark; ///< the queue's at the start of the scan
    quint64 departures;    ///< the tracker's at the start of the scan
    std::shared_ptr<CaptionBatch> batch;
    ScanCounts counts = {};
};

LocalFolderScan::LocalFolderScan(LocalScanParts parts)
    : m_parts(std::move(parts))
    , m_queue(m_parts)
    , m_scans([this](const QString& words) { print(u"A scan failed: "_s + words); }) {}

void LocalFolderScan::startScan(const QString& folder) {
    m_scans.spawn(scanFolder(folder));
}

QCoro::Task<> LocalFolderScan::scanFolder(QString folder) {
    folder = QDir::cleanPath(folder);
    const auto scan = std::make_shared<Scan>(Scan{.folder = folder,
                                                  .mark = m_queue.mark(),
                                                  .departures = m_parts.tracker.departures(),
                                                  .batch = std::make_shared<CaptionBatch>(m_parts.log)});
    if (!m_lookedThrough.value(folder).isOvertaken()) {
        print(u"The last scan of %1 is still going on, no other is begun"_s.arg(QDir(folder).dirName()));
        co_return;
    }
    const ScopedAccess access(m_parts.access, folder);
    m_lookedThrough.insert(folder, scan->mark);
    co_await prepare(folder);
    const auto done = co_await attempt(lookThrough(scan));
    if (m_lookedThrough.value(folder) == scan->mark) {
        m_lookedThrough.remove(folder);
    }
    if (!done) {
        print(u"Error scanning directory: "_s + done.words());
    } else {
        summarize(*scan);
    }
    if (!scan->mark.isOvertaken()) {
        m_parts.onLooked(done ? std::nullopt : std::optional(troubleOf(folder, done.failure())));
    }
    if (scan->batch->started == 0) {
        co_return;
    }
    co_await scan->batch->tasks.finished();
    print(u"Auto-processing batch complete: %1 processed, %2 failed"_s.arg(scan->batch->processed)
              .arg(scan->batch->failed));
}

/// Takes in what other programs have captioned meanwhile, and removes what a killed one has left in the
/// folder.
QCoro::Task<> LocalFolderScan::prepare(QString folder) {
    constexpr std::chrono::minutes tidyInterval{1};
    co_await m_parts.manifest.refresh();
    const QDateTime now = m_parts.clock.now();
    const QDateTime last = m_tidied.value(folder);
    if (!last.isValid() || last.msecsTo(now) >= std::chrono::milliseconds(tidyInterval).count()) {
        m_tidied.insert(folder, now);
        co_await attempt(tidyFolder(m_parts.threads, folder));
    }
}

QCoro::Task<> LocalFolderScan::lookThrough(std::shared_ptr<Scan> scan) {
    auto list = [folder = scan->folder] { return listImages(folder); };
    const ImageListing listing = co_await onThreadPool(m_parts.threads.of(scan->folder), list);
    if (scan->mark.isOvertaken()) {
        co_return;
    }
    const qsizetype total = listing.images.size();
    print(u"Scanning directory: "_s + QDir(scan->folder).dirName());
    print(u"Found %1 image files total (%2 RAW, %3 JPEG)"_s.arg(total)
              .arg(total - listing.jpegCount)
              .arg(listing.jpegCount));
    for (const QString& name : listing.illegible) {
        printFor(name, u"The file name is not UTF-8, skipping"_s);
        fail(*scan, name, illegibleNameWords());
    }
    m_captioned.enterFolder(scan->folder);
    m_captioned.keepOnly(listing.images);
    for (qsizetype first = 0; first < total && !scan->mark.isOvertaken(); first += looksAtATime) {
        co_await look(scan, listing.images.mid(first, looksAtATime));
    }
}

QCoro::Task<> LocalFolderScan::look(std::shared_ptr<Scan> scan, QStringList names) {
    QThreadPool* thread = m_parts.threads.of(scan->folder);
    const QDateTime seenAt = m_parts.clock.now();
    auto see = [folder = scan->folder, names, settled = m_captioned.settled(),
                unwritable = m_parts.tracker.unwritable()] {
        return seeImages(folder, withoutUnchanged(folder, names, settled), unwritable);
    };
    QList<SeenImage> images = co_await onThreadPool(thread, see);
    if (scan->mark.isOvertaken()) {
        co_return;
    }
    // Without a line: one for each image and scan would fill the system's log.
    scan->counts.haveCaptions += static_cast<int>(names.size() - images.size());
    images.removeIf([&](const SeenImage& image) { return isLeftAlone(*scan, image); });
    const qsizetype total = images.size();
    for (qsizetype first = 0; first < total && !scan->mark.isOvertaken(); first += readingsAtATime) {
        co_await check(scan, images.mid(first, readingsAtATime), seenAt);
    }
}

QCoro::Task<> LocalFolderScan::check(std::shared_ptr<Scan> scan, QList<SeenImage> images, QDateTime seenAt) {
    auto read = [folder = scan->folder, images, zone = m_parts.clock.timeZone()] {
        return checkImages(folder, images, zone);
    };
    const QList<ImageCheck> checks = co_await onThreadPool(m_parts.threads.of(scan->folder), read);
    if (scan->mark.isOvertaken()) {
        co_return;
    }
    QList<QueuedImage> queued;
    for (const ImageCheck& checked : checks) {
        // Again: since it was read, the image may have entered the works, or left them.
        if (!isLeftAlone(*scan, checked.image) && needsCaption(*scan, checked, seenAt)) {
            print(u"  ✓ Queuing %1 for processing"_s.arg(checked.image.name));
            ++scan->counts.toProcess;
            const QString file = scan->folder + u'/' + checked.image.name;
            queued.append(
                {.image = checked.image,
                 .request = {
                     .file = file, .seenAt = seenAt, .facts = checked.facts, .image = checked.stamp}});
        }
    }
    if (!queued.isEmpty()) {
        m_queue.add(scan->folder, queued, scan->batch);
    }
}

bool LocalFolderScan::isLeftAlone(Scan& scan, const SeenImage& image) {
    const ProcessingTracker& tracker = m_parts.tracker;
    if (isKnown(image)) {
        ++scan.counts.previouslyProcessed;
        return true;
    }
    if (tracker.isProcessing(image.name) || tracker.hasLeftSince(image.name, scan.departures)) {
        printFor(image.name, u"Already processing"_s);
        ++scan.counts.processing;
        return true;
    }
    if (tracker.hasRecentlyFailed(image.name)) {
        printFor(image.name, u"Recently failed, skipping"_s);
        return true;
    }
    if (image.conditions && tracker.isUnwritable(image.name, *image.conditions)) {
        printFor(image.name, u"Cannot be edited, left alone until it or its folder changes"_s);
        return true;
    }
    if (!image.entry) { // a missing image must not get a sidecar
        printFor(image.name, u"No longer there, skipping"_s);
        return true;
    }
    return false;
}

bool LocalFolderScan::isKnown(const SeenImage& image) const {
    return image.entry ? m_parts.manifest.isProcessed(*image.entry)
                       : m_parts.manifest.isProcessedByName(image.name);
}

bool LocalFolderScan::needsCaption(Scan& scan, const ImageCheck& check, const QDateTime& seenAt) {
    using Verdict = CaptionJudgement::Verdict;
    const QString& name = check.image.name;
    if (check.isSidecarNew) {
        printFor(name, u"Created XMP sidecar"_s);
    }
    for (const QString& line : check.readerLines) {
        m_parts.log.print(line);
    }
    if (check.sidecarFailure) {
        printFor(name, u"Failed to create XMP sidecar: "_s + *check.sidecarFailure);
        ++scan.counts.noSidecar;
        fail(scan, name, *check.sidecarFailure);
        return false;
    }
    if (check.caption.verdict == Verdict::present) {
        printFor(name, u"Already has caption (%1 chars)"_s.arg(check.caption.characters));
        ++scan.counts.haveCaptions;
        m_captioned.add(name, check.metadataStamp, seenAt, m_parts.clock.now());
        return false;
    }
    printFor(name, check.caption.verdict == Verdict::tooShort
                       ? u"Caption too short (%1 chars), needs processing"_s.arg(check.caption.characters)
                       : u"No caption or caption was cleared, needs processing"_s);
    return true;
}

/// Announces each reason once, as every scan finds the image again.
void LocalFolderScan::fail(const Scan& scan, const QString& name, const QString& reason) {
    ImageOutcome image;
    image.file = scan.folder + u'/' + name;
    image.kind = OutcomeKind::refused;
    image.reason = reason;
    const QString key = image.file + u'\n' + reason;
    if (!m_failures.contains(key)) {
        m_failures.insert(key);
        m_parts.onFailure(image);
    }
}

void LocalFolderScan::summarize(const Scan& scan) {
    if (scan.mark.isOvertaken()) {
        print(u"Scan stopped: "_s + QDir(scan.folder).dirName());
        return;
    }
    const ScanCounts& counts = scan.counts;
    print(
        u"Scan complete: %1 to process, %2 processing, %3 previously processed, %4 have captions, %5 no XMP"_s
            .arg(counts.toProcess)
            .arg(counts.processing)
            .arg(counts.previouslyProcessed)
            .arg(counts.haveCaptions)
            .arg(counts.noSidecar));
}

void LocalFolderScan::print(const QString& words) {
    m_parts.log.print(u"[AppDelegate] "_s + words);
}

void LocalFolderScan::printFor(const QString& name, const QString& words) {
    print(u"  %1: %2"_s.arg(name, words));
}

} // namespace ostrelle
