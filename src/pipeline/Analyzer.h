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
#include <QObject>
#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// The caption pipeline: single images, of which several may be under way at once, and runs over many images.
/// It must outlive its tasks.
class Analyzer : public QObject {
    Q_OBJECT

public:
    explicit Analyzer(AnalyzerParts parts);

    /// Captions the image if it needs a caption. True when it needs no further attempt: it was captioned, or
    /// it was left alone because it has a caption. Waits its turn behind other images and runs, and for other
    /// programs that caption the same image. Never throws; imageFinished() has the details.
    QCoro::Task<bool> analyzeSingle(QString file);
    /// The same for an image of auto mode, which has seen to the roster: only while the image is what the
    /// scan saw. One that is done is in the manifest.
    QCoro::Task<ImageOutcome> captionWatched(ImageRequest request);

    /// Gathers what is known of the image, asks the model and writes the caption, without waiting for a turn.
    /// Throws what went wrong; an AnalyzerError with the code missingKey when no API key is stored.
    QCoro::Task<ImageOutcome> analyzeImage(QString file);

    /// The text that the model would be sent for the image as it is. Writes nothing and asks no model. Throws
    /// what went wrong.
    QCoro::Task<QString> promptFor(QString file);

    /// Captions the images of the folder that the settings name, ten in a request. Never throws; the status
    /// and an alert or a notification tell the user what happened.
    QCoro::Task<RunTally> recaptionFolder(FolderImages which);
    /// The same of images that the user chose. `access` was begun before the choice and is held to the end.
    /// The workspace has to outlive the task.
    QCoro::Task<RunTally> captionSelection(QStringList files, HeldAccess access, Workspace& workspace);

    /// An image has failed before it came here.
    void announceFailure(const ImageOutcome& image) { Q_EMIT imageFinished(image); }

Q_SIGNALS:
    /// An image is done with, except by analyzeImage(). The costs of a batch are not divided among its
    /// images.
    void imageFinished(const ostrelle::ImageOutcome& image);

private:
    QCoro::Task<ImageOutcome> captionInTurn(ImageRequest request);
    /// What follows for the user; others have their turn meanwhile.
    QCoro::Task<> follow(ImageOutcome image);
    void countFailure(ImageOutcome& image);
    QCoro::Task<> stopForKey();
    /// Notifies the user once of a service that refuses one image after the other.
    QCoro::Task<> notifyOfRefusals();
    OutcomeListener announcer();

    AnalyzerParts m_parts;
    ServiceRefusals m_refusals;
    std::optional<ServiceRefusals::Cause> m_refusal; ///< while it holds
    bool m_isAskingForKey = false;
};

} // namespace ostrelle
