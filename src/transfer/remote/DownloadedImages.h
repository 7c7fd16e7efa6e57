// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/CaptionProgress.h"
#include "pipeline/CaptionTurns.h"
#include "pipeline/ImageOutcome.h"
#include "pipeline/ProcessingTracker.h"
#include "platform/Clock.h"
#include "platform/FileAccess.h"
#include "platform/FolderThreads.h"
#include "platform/ImageClaims.h"
#include "platform/PlainLog.h"
#include "product/NotificationManager.h"
#include "state/ProcessedFilesManifest.h"
#include "state/StatusStore.h"

#include <QCoroTask>
#include <QString>
#include <QStringList>
#include <functional>

namespace ostrelle {

/// What the captioning of downloaded images works with. All of it must outlive the tasks.
struct DownloadedImagesParts {
    ProcessedFilesManifest& manifest;
    ProcessingTracker& tracker;
    CaptionProgress& progress;
    StatusStore& status;
    NotificationManager& notifications;
    CaptionTurns& turns;
    FileAccess& access;
    FolderThreads& threads;
    ImageClaims& claims;
    Clock& clock;
    PlainLog& log;
    /// Captions one image; if it is done, it is in the manifest afterwards. In the program, this is
    /// Analyzer::captionDownloaded().
    std::function<QCoro::Task<ImageOutcome>(QString file)> captioning;
    /// Hears of an image that cannot be captioned at all.
    OutcomeListener onFailure = [](const ImageOutcome&) {};
};

/// Captions images that were fetched from a server, strictly one after the other. For the thread of the event
/// loop only.
class DownloadedImages {
public:
    explicit DownloadedImages(DownloadedImagesParts parts) : m_parts(std::move(parts)) {}
    DownloadedImages(const DownloadedImages&) = delete;
    DownloadedImages& operator=(const DownloadedImages&) = delete;

    /// The images of a poll, which may be none. Resumes with those that were not begun, as they were stopped.
    /// Never throws.
    QCoro::Task<QStringList> caption(QStringList images);
    /// The same for the images of a full download, of whose end the user is notified.
    QCoro::Task<QStringList> captionAll(QStringList images);

private:
    /// `isOld` if it was captioned before it was fetched: then it is put away. False if it was stopped before
    /// its turn.
    QCoro::Task<bool> process(QString file, bool isOld, Overtaking::Mark mark);
    /// Whether there is something to caption; makes a missing sidecar. Each reason against it is logged.
    QCoro::Task<bool> isReady(QString file);
    void fail(const QString& file, const QString& reason);
    QCoro::Task<bool> captionOne(QString file, Overtaking::Mark mark);
    void print(const QString& words);

    DownloadedImagesParts m_parts;
};

} // namespace ostrelle
