// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/FolderRun.h"

#include "core/Attempt.h"
#include "core/Text.h"
#include "pipeline/CodeReplacements.h"
#include "pipeline/FolderTidying.h"
#include "pipeline/ImageListing.h"
#include "platform/FileError.h"

#include <QDir>
#include <algorithm>
#include <cerrno>

#include "product/ApiKey.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

QString interruptionMessage(qint64 processed, qint64 failed, qint64 notBegun) {
    return u"Interrupted. Captioned: %1, failed: %2, not begun: %3."_s.arg(processed).arg(failed).arg(
        notBegun);
}

QCoro::Task<> FolderRun::execute(FolderImages which) {
    const std::optional<QString> folder = co_await permittedFolder();
    if (!folder) {
        co_return;
    }
    const std::optional<Result> result = co_await captionInTurn(*folder, which);
    // By now others may caption again: neither the desktop nor the user need be waited for.
    if (result && result->isInterrupted) {
        co_return; // which the status says
    }
    if (result && result->imageCount > 0) {
        co_await m_parts.notifications.postProcessingResult(result->processed, result->failed, m_failedNames);
    } else if (result) {
        co_await tellThatNoneIsNew();
    }
}

QCoro::Task<std::optional<FolderRun::Result>> FolderRun::captionInTurn(QString folder, FolderImages which) {
    const auto turn = co_await m_parts.turns.runTurn();
    if (!turn) {
        co_return std::nullopt; // the program ends
    }
    const QDateTime begun = m_parts.clock.now();
    const ScopedAccess access(m_parts.access, folder);
    std::optional<Finds> finds = co_await findImages(folder);
    if (!finds) {
        co_return std::nullopt;
    }
    co_await tidyFolder(m_parts.threads, folder);
    QStringList& images = finds->images;
    if (which == FolderImages::onlyNew) {
        images = co_await withoutProcessed(images);
    } else {
        m_parts.log.appendToLog(
            u"[Analyzer] Force Re-analyze All: Processing all %1 files, ignoring manifest"_s.arg(
                images.size()));
    }
    const qsizetype count = images.size() + finds->illegible.size();
    begin(count);
    if (count == 0) {
        co_return Result{};
    }
    failIllegible(folder, finds->illegible);
    const qsizetype imagesBegun = co_await runBatches(images, begun);
    const qsizetype notBegun = images.size() - imagesBegun;
    end(notBegun);
    co_return Result{.imageCount = count,
                     .processed = m_parts.status.processed(),
                     .failed = m_parts.status.failed(),
                     .isInterrupted = notBegun > 0};
}

QCoro::Task<> FolderRun::tellThatNoneIsNew() {
    Alert alert;
    alert.title = u"No New Images Found"_s;
    alert.text = u"All images in the selected folder have already been processed, or no RAW files with XMP "
                 "sidecars were found."_s;
    alert.buttons = QStringList{u"OK"_s};
    co_await m_parts.alerts.show(alert);
}

QCoro::Task<std::optional<QString>> FolderRun::permittedFolder() {
    if (!co_await hasKey()) {
        co_return std::nullopt;
    }
    const std::optional<QString> folder = selectedFolder();
    if (!folder || !co_await hasRoster(*folder)) {
        co_return std::nullopt;
    }
    co_return folder;
}

QCoro::Task<bool> FolderRun::hasKey() {
    if (!apiKey(m_parts.defaults).isEmpty()) {
        co_return true;
    }
    Alert alert;
    alert.title = u"API Key Required"_s;
    alert.text = u"Please add your own OpenAI API key in Settings to continue using Ostrelle Captions."_s;
    alert.buttons = QStringList{u"Open Settings"_s, u"Cancel"_s};
    const int button = co_await m_parts.alerts.show(alert);
    if (button == 0) {
        Q_EMIT m_parts.events.showSettingsWindow();
    }
    m_parts.status.setLastMessage(u"Please add your API key in Settings."_s);
    co_return false;
}

std::optional<QString> FolderRun::selectedFolder() {
    const bool isLocal = m_parts.settings.sourceType() == SourceType::local;
    std::optional<QString> folder =
        isLocal ? m_parts.settings.ingestFolder() : m_parts.settings.destinationFolder();
    if (folder) {
        m_parts.log.appendToLog((isLocal ? u"[Analyzer] RECAPTION: Using local watch folder: "_s
                                         : u"[Analyzer] RECAPTION: Using FTP destination folder: "_s) +
                                *folder);
        return folder;
    }
    refuse(0, isLocal ? u"No folder selected. Choose a folder first."_s
                      : u"No FTP destination folder selected. Choose a folder first."_s);
    m_parts.log.printAndAppend(
        isLocal ? u"[Analyzer] ERROR: No ingest folder selected for recaption operation."_s
                : u"[Analyzer] ERROR: No FTP destination folder selected for recaption operation."_s);
    return std::nullopt;
}

QCoro::Task<bool> FolderRun::hasRoster(QString folder) {
    auto look = [selected = m_parts.settings.codeReplacementsFile(), folder] {
        return hasCodeReplacementsFile(selected, folder);
    };
    if (co_await onThreadPool(m_parts.threads.of(folder), look)) {
        co_return true;
    }
    Alert alert;
    alert.title = u"Code Replacement File Required"_s;
    alert.text = u"A Photo Mechanic Code Replacement file is required to generate captions."_s;
    alert.buttons = QStringList{u"OK"_s};
    alert.style = Alert::Style::warning;
    co_await m_parts.alerts.show(alert);
    refuse(0, u"Code replacement file required."_s);
    m_parts.log.appendToLog(u"[Analyzer] No code replacement file selected or auto-discovered."_s);
    co_return false;
}

QCoro::Task<std::optional<FolderRun::Finds>> FolderRun::findImages(QString folder) {
    const QDir directory(folder); // which may be given with a slash at its end
    auto read = [folder] { return listImages(folder); };
    const auto listing = co_await attempt(onThreadPool(m_parts.threads.of(folder), read));
    if (listing) {
        m_parts.log.appendToLog(u"[Analyzer] RECAPTION: Found %1 items in folder: %2"_s.arg(
            QString::number(listing->itemCount), folder));
        for (const QString& name : listing->illegible) {
            m_parts.log.printAndAppend(u"[Analyzer] %1: The file name is not UTF-8, skipping"_s.arg(name));
        }
        Finds finds{.images = {}, .illegible = listing->illegible};
        for (const QString& image : listing->images) {
            finds.images.append(directory.filePath(image));
        }
        co_return finds;
    }
    const auto error = listing.failureAs<FileError>();
    if (error && (error->code() == ENOENT || error->code() == ENOTDIR)) {
        m_parts.log.appendToLog(u"[Analyzer] ERROR: Folder does not exist or is not accessible: "_s + folder);
        refuse(1, u"Folder not found: %1. Please check your folder settings."_s.arg(directory.dirName()));
    } else {
        m_parts.log.appendToLog(
            u"[Analyzer] ERROR: Failed to read directory at %1: %2"_s.arg(folder, listing.words()));
        refuse(1, u"Failed to read folder: %1. Error: %2"_s.arg(directory.dirName(), listing.words()));
    }
    co_return std::nullopt;
}

QCoro::Task<QStringList> FolderRun::withoutProcessed(QStringList images) {
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

void FolderRun::begin(qsizetype imageCount) {
    StatusStore& status = m_parts.status;
    status.setPending(imageCount);
    status.setProcessed(0);
    status.setFailed(0);
    status.setLastMessage(
        imageCount == 0
            ? u"No new files to process."_s
            : u"Found %1 file%2 to process. Starting analysis..."_s.arg(imageCount).arg(plural(imageCount)));
    status.setIsProcessing(imageCount != 0);
    status.setTotalFiles(imageCount);
    status.setCurrentFileIndex(0);
    status.setIsWaitingForAPI(false);
    status.clearBatch();
    status.beginTimedRun(imageCount);
}

void FolderRun::failIllegible(const QString& folder, const QStringList& names) {
    for (const QString& name : names) {
        ImageReport report;
        report.file = QDir(folder).filePath(name);
        report.reason = illegibleNameWords();
        BatchProgress(m_parts.status, 0).failed(name, BatchProgress::Telling::byItself);
        m_failedNames.append(name);
        m_listener(report);
    }
}

QCoro::Task<qsizetype> FolderRun::runBatches(QStringList images, QDateTime begun) {
    constexpr qsizetype size = BatchRun::mostImages;
    const qsizetype count = (images.size() + size - 1) / size;
    m_parts.log.appendToLog(
        u"[Analyzer] Processing %1 files in %2 batch(es) of up to 10 images each"_s.arg(images.size())
            .arg(count));
    qsizetype imagesBegun = 0;
    for (qsizetype index = 0; index < count && !m_parts.turns.isClosed(); ++index) {
        const qsizetype start = index * size;
        const QStringList files = images.mid(start, size);
        beginBatch(index, count, files.size());
        BatchRun batch(m_parts, files, start, begun, m_listener);
        const BatchOutcome outcome = co_await batch.execute();
        m_failedNames.append(outcome.failedNames);
        for (const BatchFileResult& result : outcome.results) {
            imagesBegun += result.isBegun ? 1 : 0;
            if (!result.success) {
                m_failedNames.append(result.name);
            }
        }
    }
    co_return imagesBegun;
}

void FolderRun::beginBatch(qsizetype index, qsizetype count, qsizetype imageCount) {
    const qint64 start = index * BatchRun::mostImages;
    StatusStore& status = m_parts.status;
    status.setCurrentBatchNumber(index + 1);
    status.setTotalBatchCount(count);
    status.setCurrentBatchSize(imageCount);
    status.setCurrentBatchStartIndex(start);
    status.setLastMessage(u"Processing batch %1 of %2 (%3 image%4)..."_s.arg(index + 1)
                              .arg(count)
                              .arg(imageCount)
                              .arg(plural(imageCount)));
    status.setCurrentFileName(std::nullopt);
    status.setCurrentFileIndex(std::max(start + 1, status.currentFileIndex()));
}

void FolderRun::end(qsizetype notBegun) {
    StatusStore& status = m_parts.status;
    const qint64 processed = status.processed();
    const qint64 failed = status.failed();
    if (notBegun == 0) {
        m_parts.log.printAndAppend(
            u"[Analyzer] Completed. Processed %1, Failed %2"_s.arg(processed).arg(failed));
        status.setLastMessage(u"Done. Processed: %1, Failed: %2."_s.arg(processed).arg(failed));
    } else {
        const QString words = interruptionMessage(processed, failed, notBegun);
        m_parts.log.printAndAppend(u"[Analyzer] "_s + words);
        status.setLastMessage(words);
    }
    status.setIsProcessing(false);
    status.setCurrentFileName(std::nullopt);
    status.setCurrentFileIndex(0);
    status.setTotalFiles(0);
    status.setIsWaitingForAPI(false);
    status.clearBatch();
    status.recordBatchFinished();
}

/// The user is told why there is no run.
void FolderRun::refuse(qint64 failed, const QString& message) {
    m_parts.status.setProcessed(0);
    m_parts.status.setPending(0);
    m_parts.status.setFailed(failed);
    m_parts.status.setLastMessage(message);
}

} // namespace ostrelle
