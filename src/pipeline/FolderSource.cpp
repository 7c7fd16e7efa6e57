// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/FolderSource.h"

#include "core/Attempt.h"
#include "core/Text.h"
#include "pipeline/CaptionCount.h"
#include "pipeline/CodeReplacements.h"
#include "pipeline/ImageListing.h"
#include "pipeline/MissingKey.h"
#include "platform/FileError.h"
#include "product/ApiKey.h"

#include <QDir>
#include <cerrno>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

Alert missingRosterAlert() {
    Alert alert;
    alert.title = u"Code Replacement File Required"_s;
    alert.text = u"A Photo Mechanic Code Replacement file is required to generate captions."_s;
    alert.buttons = QStringList{u"OK"_s};
    alert.style = Alert::Style::warning;
    return alert;
}

Alert noNewImagesAlert() {
    Alert alert;
    alert.title = u"No New Images Found"_s;
    alert.text = u"All images in the selected folder have already been processed, or no RAW files with XMP "
                 "sidecars were found."_s;
    alert.buttons = QStringList{u"OK"_s};
    return alert;
}

} // namespace

QCoro::Task<bool> FolderSource::admit() {
    if (apiKey(m_parts.defaults).isEmpty()) {
        co_await askForKey(keyForFolderAlert(), m_parts.alerts, m_parts.events, m_parts.progress);
        co_return false;
    }
    const std::optional<QString> folder = selectedFolder();
    m_folder = folder.value_or(QString());
    co_return folder&& co_await hasRoster();
}

std::optional<QString> FolderSource::selectedFolder() {
    const bool isLocal = m_parts.settings.sourceType() == SourceType::local;
    std::optional<QString> folder =
        isLocal ? m_parts.settings.ingestFolder() : m_parts.settings.destinationFolder();
    if (folder) {
        m_parts.log.appendToLog((isLocal ? u"[Analyzer] RECAPTION: Using local watch folder: "_s
                                         : u"[Analyzer] RECAPTION: Using FTP destination folder: "_s) +
                                *folder);
        return folder;
    }
    m_parts.progress.refuseRun(0, isLocal ? u"No folder selected. Choose a folder first."_s
                                          : u"No FTP destination folder selected. Choose a folder first."_s);
    m_parts.log.printAndAppend(
        isLocal ? u"[Analyzer] ERROR: No ingest folder selected for recaption operation."_s
                : u"[Analyzer] ERROR: No FTP destination folder selected for recaption operation."_s);
    return std::nullopt;
}

QCoro::Task<bool> FolderSource::hasRoster() {
    auto look = [selected = m_parts.settings.codeReplacementsFile(), folder = m_folder] {
        return hasCodeReplacementsFile(selected, folder);
    };
    if (co_await onThreadPool(m_parts.threads.of(m_folder), look)) {
        co_return true;
    }
    co_await m_parts.alerts.show(missingRosterAlert());
    m_parts.progress.refuseRun(0, u"Code replacement file required."_s);
    m_parts.log.appendToLog(u"[Analyzer] No code replacement file selected or auto-discovered."_s);
    co_return false;
}

QCoro::Task<std::optional<RunImages>> FolderSource::find() {
    m_access = std::make_unique<ScopedAccess>(m_parts.access, m_folder);
    const QDir directory(m_folder); // copes with a trailing slash
    auto read = [folder = m_folder] { return listImages(folder); };
    const auto listing = co_await attempt(onThreadPool(m_parts.threads.of(m_folder), read));
    if (!listing) {
        const auto error = listing.failureAs<FileError>();
        if (error && (error->code() == ENOENT || error->code() == ENOTDIR)) {
            refuse(u"[Analyzer] ERROR: Folder does not exist or is not accessible: "_s + m_folder,
                   u"Folder not found: %1. Please check your folder settings."_s.arg(directory.dirName()));
        } else {
            refuse(u"[Analyzer] ERROR: Failed to read directory at %1: %2"_s.arg(m_folder, listing.words()),
                   u"Failed to read folder: %1. Error: %2"_s.arg(directory.dirName(), listing.words()));
        }
        co_return std::nullopt;
    }
    m_parts.log.appendToLog(u"[Analyzer] RECAPTION: Found %1 items in folder: %2"_s.arg(
        QString::number(listing->itemCount), m_folder));
    RunImages images;
    for (const QString& name : listing->illegible) {
        m_parts.log.printAndAppend(u"[Analyzer] %1: The file name is not UTF-8, skipping"_s.arg(name));
        images.illegible.append(directory.filePath(name));
    }
    for (const QString& name : listing->images) {
        images.files.append(directory.filePath(name));
    }
    if (m_which == FolderImages::onlyNew) {
        images.files = co_await withoutProcessed(images.files);
    } else if (m_which == FolderImages::withoutCaption) {
        auto select = [files = images.files, zone = m_parts.clock.timeZone()] {
            return countCaptions(files, zone).without;
        };
        images.files = co_await onThreadPool(m_parts.threads.of(m_folder), select);
    } else {
        m_parts.log.appendToLog(
            u"[Analyzer] Force Re-analyze All: Processing all %1 files, ignoring manifest"_s.arg(
                images.files.size()));
    }
    co_return images;
}

void FolderSource::refuse(const QString& logLine, const QString& message) {
    m_parts.log.appendToLog(logLine);
    m_parts.progress.refuseRun(1, message);
}

QCoro::Task<QStringList> FolderSource::withoutProcessed(QStringList images) {
    co_await m_parts.manifest.refresh(); // other programs may have captioned here
    QStringList left;
    for (const QString& image : std::as_const(images)) {
        if (!co_await m_parts.manifest.isProcessed(image)) {
            left.append(image);
        }
    }
    m_parts.log.appendToLog(
        u"[Analyzer] Analyze New Only: Found %1 total files, %2 already in manifest, %3 to process"_s
            .arg(images.size())
            .arg(images.size() - left.size())
            .arg(left.size()));
    co_return left;
}

QString FolderSource::openingMessage(qsizetype imageCount) const {
    return imageCount == 0 ? u"No new files to process."_s
                           : u"Found %1 file%2 to process. Starting analysis..."_s.arg(imageCount)
                                 .arg(plural(imageCount));
}

void FolderSource::logBatches(qsizetype imageCount, qsizetype batchCount) {
    m_parts.log.appendToLog(
        u"[Analyzer] Processing %1 files in %2 batch(es) of up to 10 images each"_s.arg(imageCount)
            .arg(batchCount));
}

QString FolderSource::close(const RunTally& tally) {
    if (tally.ending == RunTally::Ending::interrupted) {
        m_parts.log.printAndAppend(u"[Analyzer] "_s + interruptionMessage(tally));
        return interruptionMessage(tally);
    }
    m_parts.log.printAndAppend(
        u"[Analyzer] Completed. Processed %1, Failed %2"_s.arg(tally.captioned()).arg(tally.failed()));
    return u"Done. Processed: %1, Failed: %2."_s.arg(tally.captioned()).arg(tally.failed());
}

QCoro::Task<> FolderSource::announce(RunTally tally) {
    if (tally.images.isEmpty()) {
        co_await m_parts.alerts.show(noNewImagesAlert());
        co_return;
    }
    co_await m_parts.notifications.postProcessingResult(tally.captioned(), tally.failed(),
                                                        tally.namesWithoutCaption);
}

} // namespace ostrelle
