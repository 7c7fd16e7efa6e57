// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerParts.h"
#include "pipeline/FolderSource.h"
#include "pipeline/ImageOutcome.h"
#include "pipeline/ImageRequest.h"
#include "pipeline/RunTally.h"
#include "pipeline/SelectionSource.h"
#include "pipeline/ServiceRefusals.h"

#include <QCoroTask>
#include <QDateTime>
#include <QObject>
#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// The caption pipeline: captions single images, several at a time, and runs over many images. Must outlive
/// its tasks.
class Analyzer : public QObject {
    Q_OBJECT

public:
    explicit Analyzer(AnalyzerParts parts);

    /// Captions the image if it needs a caption. True if no further attempt is needed: it was captioned, or
    /// left alone because it has a caption. Waits for its turn, and for other programs that are captioning
    /// the same image; one that another has captioned since `begun`, by default since this call, is left
    /// alone. Never throws; imageFinished() has the details.
    QCoro::Task<bool> analyzeSingle(QString file, std::optional<QDateTime> begun = {});
    /// The same for an image from auto mode, which has checked for a roster itself. Captions it only if it is
    /// still as the scan saw it. An image that needs no further attempt is in the manifest afterwards.
    QCoro::Task<ImageOutcome> captionWatched(ImageRequest request);

    /// As analyzeSingle() for an image that was fetched from a server. One that needs no further attempt is
    /// in the manifest afterwards.
    QCoro::Task<ImageOutcome> captionDownloaded(QString file);

    /// Gathers the facts of the image, asks the model and writes the caption, without waiting for a turn.
    /// Throws the failure, such as an AnalyzerError with the code missingKey when no API key is stored.
    QCoro::Task<ImageOutcome> analyzeImage(QString file);

    /// The prompt that the model would get for the image as it is. Neither writes anything nor asks the
    /// model. Throws the failure.
    QCoro::Task<QString> promptFor(QString file);

    /// Captions the images of the folder in the settings, up to ten per request. Never throws; the status and
    /// an alert or a notification show the user what happened.
    QCoro::Task<RunTally> recaptionFolder(FolderImages which);
    /// The same for images that the user chose. `access` was begun before the choice and is held to the end.
    /// The workspace must outlive the task.
    QCoro::Task<RunTally> captionSelection(QStringList files, HeldAccess access, Workspace& workspace);

    /// Announces an image that failed before it reached the pipeline.
    void announceFailure(const ImageOutcome& image) { Q_EMIT imageFinished(image); }

Q_SIGNALS:
    /// An image has its final outcome; not emitted by analyzeImage(). The cost of a batch is not divided
    /// among its images.
    void imageFinished(const ostrelle::ImageOutcome& image);

private:
    QCoro::Task<ImageOutcome> captionInTurn(ImageRequest request);
    /// Shows the user what must be shown, after the turn has passed on.
    QCoro::Task<> follow(ImageOutcome image);
    void countFailure(ImageOutcome& image);
    QCoro::Task<> stopForKey();
    /// Notifies the user once when the service refuses one image after another.
    QCoro::Task<> notifyOfRefusals();
    OutcomeListener announcer();

    AnalyzerParts m_parts;
    ServiceRefusals m_refusals;
    std::optional<ServiceRefusals::Cause> m_refusal; ///< while it lasts
    bool m_isAskingForKey = false;
};

} // namespace ostrelle
