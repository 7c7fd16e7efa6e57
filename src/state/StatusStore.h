// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"
#include "platform/DefaultsStore.h"
#include "state/Publish.h"
#include "state/RunProgress.h"

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// How long a run took.
struct BatchTiming {
    qint64 imageCount = 0;
    double totalSeconds = 0;
    double secondsPerImage = 0;
    double averageSeconds = 0; ///< per image, over the remembered runs, this one included
};

/// What the user sees of a run, and what remains of it: counters of the current run, the remote side's
/// progress, three counters of all time and the times of the last hundred runs.
/// The pipelines and watchers write most fields directly. For the thread of the event loop only.
class StatusStore : public QObject {
    Q_OBJECT

public:
    /// Loads the counters and times of earlier runs; both arguments must outlive the store.
    StatusStore(DefaultsStore& defaults, Clock& clock);

    /// Counts one image that the pipeline has captioned.
    void recordImageProcessed();
    /// Counts one image that failed.
    void recordImageFailed();
    /// Starts to time a run over this number of images.
    void beginTimedRun(qint64 imageCount);
    /// Remembers the run's time and announces it with batchFinished(), if a run was timed and had images.
    void recordBatchFinished();
    /// Forgets the counters and times of earlier runs, but not lifetimeImagesProcessed.
    void clearStatistics();

    double overallProgress() const { return ostrelle::overallProgress(m_run); }
    double batchProgress() const { return ostrelle::batchProgress(m_run); }
    double batchedRunProgress() const { return ostrelle::batchedRunProgress(m_run); }
    /// The percentage of all images ever that did not fail; 0 without any.
    double successRate() const;
    /// Seconds per image, over the remembered runs; 0 without any.
    double averageProcessingTime() const;

    /// The current run; see RunProgress for each.
    qint64 processed() const { return m_run.processed; }
    qint64 failed() const { return m_run.failed; }
    /// Images still to go in the current run.
    qint64 pending() const { return m_pending; }
    /// The latest one-line status text.
    std::optional<QString> lastMessage() const { return m_lastMessage; }
    /// Seconds to the next automatic scan; nothing when auto mode is off.
    std::optional<qint64> nextScanCountdown() const { return m_nextScanCountdown; }
    /// The latest line from the remote side.
    std::optional<QString> ftpStatusMessage() const { return m_ftpStatusMessage; }
    /// What else is to be said of the latest check or download: lines on what was not fetched, and why.
    QStringList ftpRemarks() const { return m_ftpRemarks; }
    /// Why the watch folder or the server cannot be looked through, a sentence; nothing if it can.
    std::optional<QString> sourceTrouble() const { return m_sourceTrouble; }
    bool ftpIsChecking() const { return m_ftpIsChecking; }
    bool ftpIsDownloading() const { return m_ftpIsDownloading; }
    /// Files that the current check has found.
    qint64 ftpFilesFound() const { return m_ftpFilesFound; }
    /// Files of the current download so far, and how many of them are images and metadata.
    qint64 ftpFilesDownloaded() const { return m_ftpFilesDownloaded; }
    qint64 ftpImagesDownloaded() const { return m_ftpImagesDownloaded; }
    qint64 ftpMetadataDownloaded() const { return m_ftpMetadataDownloaded; }
    /// The fraction of the download's bytes, from 0 to 1.
    double ftpDownloadProgress() const { return m_ftpDownloadProgress; }
    qint64 ftpTotalBytesToDownload() const { return m_ftpTotalBytesToDownload; }
    qint64 ftpBytesDownloaded() const { return m_ftpBytesDownloaded; }
    /// A caption run is in progress.
    bool isProcessing() const { return m_isProcessing; }
    /// Why the manifest of what has been captioned cannot be saved; nothing when it can.
    std::optional<QString> manifestFailure() const { return m_manifestFailure; }
    std::optional<QString> currentFileName() const { return m_currentFileName; }
    qint64 totalFiles() const { return m_run.totalFiles; }
    qint64 currentFileIndex() const { return m_run.currentFileIndex; }
    bool isWaitingForAPI() const { return m_run.isWaitingForAPI; }
    qint64 currentBatchStartIndex() const { return m_run.currentBatchStartIndex; }
    qint64 currentBatchSize() const { return m_run.currentBatchSize; }
    qint64 currentBatchNumber() const { return m_run.currentBatchNumber; }
    qint64 totalBatchCount() const { return m_run.totalBatchCount; }
    /// Kept over restarts.
    qint64 totalProcessedAllTime() const { return m_totalProcessedAllTime; }
    qint64 totalFailedAllTime() const { return m_totalFailedAllTime; }
    qint64 lifetimeImagesProcessed() const { return m_lifetimeImagesProcessed; }

    QueueProgress queue() const { return m_queue; }
    /// The user has paused the captioning.
    bool isPaused() const { return m_isPaused; }

    void setProcessed(qint64 count) { publish(this, m_run.processed, count, &StatusStore::processedChanged); }
    void setFailed(qint64 count) { publish(this, m_run.failed, count, &StatusStore::failedChanged); }
    void setPending(qint64 count) { publish(this, m_pending, count, &StatusStore::pendingChanged); }
    void setQueue(const QueueProgress& queue) { publish(this, m_queue, queue, &StatusStore::queueChanged); }
    void setIsPaused(bool on) { publish(this, m_isPaused, on, &StatusStore::isPausedChanged); }
    void setLastMessage(const std::optional<QString>& text) {
        publish(this, m_lastMessage, text, &StatusStore::lastMessageChanged);
    }
    void setNextScanCountdown(std::optional<qint64> seconds) {
        publish(this, m_nextScanCountdown, seconds, &StatusStore::nextScanCountdownChanged);
    }
    void setFtpStatusMessage(const std::optional<QString>& text) {
        publish(this, m_ftpStatusMessage, text, &StatusStore::ftpStatusMessageChanged);
    }
    void setFtpRemarks(const QStringList& lines) {
        publish(this, m_ftpRemarks, lines, &StatusStore::ftpRemarksChanged);
    }
    void setSourceTrouble(const std::optional<QString>& reason) {
        publish(this, m_sourceTrouble, reason, &StatusStore::sourceTroubleChanged);
    }
    void setFtpIsChecking(bool on) { publish(this, m_ftpIsChecking, on, &StatusStore::ftpIsCheckingChanged); }
    void setFtpIsDownloading(bool on) {
        publish(this, m_ftpIsDownloading, on, &StatusStore::ftpIsDownloadingChanged);
    }
    void setFtpFilesFound(qint64 count) {
        publish(this, m_ftpFilesFound, count, &StatusStore::ftpFilesFoundChanged);
    }
    void setFtpFilesDownloaded(qint64 count) {
        publish(this, m_ftpFilesDownloaded, count, &StatusStore::ftpFilesDownloadedChanged);
    }
    void setFtpImagesDownloaded(qint64 count) {
        publish(this, m_ftpImagesDownloaded, count, &StatusStore::ftpImagesDownloadedChanged);
    }
    void setFtpMetadataDownloaded(qint64 count) {
        publish(this, m_ftpMetadataDownloaded, count, &StatusStore::ftpMetadataDownloadedChanged);
    }
    void setFtpDownloadProgress(double fraction) {
        publish(this, m_ftpDownloadProgress, fraction, &StatusStore::ftpDownloadProgressChanged);
    }
    void setFtpTotalBytesToDownload(qint64 bytes) {
        publish(this, m_ftpTotalBytesToDownload, bytes, &StatusStore::ftpTotalBytesToDownloadChanged);
    }
    void setFtpBytesDownloaded(qint64 bytes) {
        publish(this, m_ftpBytesDownloaded, bytes, &StatusStore::ftpBytesDownloadedChanged);
    }
    void setIsProcessing(bool on) { publish(this, m_isProcessing, on, &StatusStore::isProcessingChanged); }
    void setManifestFailure(const std::optional<QString>& reason) {
        publish(this, m_manifestFailure, reason, &StatusStore::manifestFailureChanged);
    }
    void setCurrentFileName(const std::optional<QString>& text) {
        publish(this, m_currentFileName, text, &StatusStore::currentFileNameChanged);
    }
    void setTotalFiles(qint64 count) {
        publish(this, m_run.totalFiles, count, &StatusStore::totalFilesChanged);
    }
    void setCurrentFileIndex(qint64 index) {
        publish(this, m_run.currentFileIndex, index, &StatusStore::currentFileIndexChanged);
    }
    void setIsWaitingForAPI(bool on) {
        publish(this, m_run.isWaitingForAPI, on, &StatusStore::isWaitingForAPIChanged);
    }
    void setCurrentBatchStartIndex(qint64 index) {
        publish(this, m_run.currentBatchStartIndex, index, &StatusStore::currentBatchStartIndexChanged);
    }
    void setCurrentBatchSize(qint64 count) {
        publish(this, m_run.currentBatchSize, count, &StatusStore::currentBatchSizeChanged);
    }
    void setCurrentBatchNumber(qint64 number) {
        publish(this, m_run.currentBatchNumber, number, &StatusStore::currentBatchNumberChanged);
    }
    void setTotalBatchCount(qint64 count) {
        publish(this, m_run.totalBatchCount, count, &StatusStore::totalBatchCountChanged);
    }
    /// Sets the current batch's four figures to 0.
    void clearBatch();
    /// These three also store the count at once.
    void setTotalProcessedAllTime(qint64 count);
    void setTotalFailedAllTime(qint64 count);
    void setLifetimeImagesProcessed(qint64 count);

Q_SIGNALS:
    void imageProcessed();
    void batchFinished(const ostrelle::BatchTiming& timing);

    void processedChanged();
    void failedChanged();
    void pendingChanged();
    void queueChanged();
    void isPausedChanged();
    void lastMessageChanged();
    void nextScanCountdownChanged();
    void ftpStatusMessageChanged();
    void ftpRemarksChanged();
    void sourceTroubleChanged();
    void ftpIsCheckingChanged();
    void ftpIsDownloadingChanged();
    void ftpFilesFoundChanged();
    void ftpFilesDownloadedChanged();
    void ftpImagesDownloadedChanged();
    void ftpMetadataDownloadedChanged();
    void ftpDownloadProgressChanged();
    void ftpTotalBytesToDownloadChanged();
    void ftpBytesDownloadedChanged();
    void isProcessingChanged();
    void manifestFailureChanged();
    void currentFileNameChanged();
    void totalFilesChanged();
    void currentFileIndexChanged();
    void isWaitingForAPIChanged();
    void currentBatchStartIndexChanged();
    void currentBatchSizeChanged();
    void currentBatchNumberChanged();
    void totalBatchCountChanged();
    void totalProcessedAllTimeChanged();
    void totalFailedAllTimeChanged();
    void lifetimeImagesProcessedChanged();

private:
    void countOneMore(qint64& counter, const QString& key, void (StatusStore::*changed)());

    DefaultsStore& m_defaults;
    Clock& m_clock;

    RunProgress m_run;
    qint64 m_pending = 0;
    QueueProgress m_queue;
    bool m_isPaused = false;
    std::optional<QString> m_lastMessage;
    std::optional<qint64> m_nextScanCountdown;
    std::optional<QString> m_ftpStatusMessage;
    QStringList m_ftpRemarks;
    std::optional<QString> m_sourceTrouble;
    bool m_ftpIsChecking = false;
    bool m_ftpIsDownloading = false;
    qint64 m_ftpFilesFound = 0;
    qint64 m_ftpFilesDownloaded = 0;
    qint64 m_ftpImagesDownloaded = 0;
    qint64 m_ftpMetadataDownloaded = 0;
    double m_ftpDownloadProgress = 0;
    qint64 m_ftpTotalBytesToDownload = 0;
    qint64 m_ftpBytesDownloaded = 0;
    bool m_isProcessing = false;
    std::optional<QString> m_manifestFailure;
    std::optional<QString> m_currentFileName;
    qint64 m_totalProcessedAllTime = 0;
    qint64 m_totalFailedAllTime = 0;
    qint64 m_lifetimeImagesProcessed = 0;
    QList<double> m_processingTimes; // seconds per image of each run, the oldest first
    std::optional<QDateTime> m_batchStartTime;
    qint64 m_batchImageCount = 0;
};

} // namespace ostrelle
