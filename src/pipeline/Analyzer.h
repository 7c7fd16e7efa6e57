// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerError.h"
#include "pipeline/AnalyzerParts.h"
#include "pipeline/BatchRun.h"
#include "pipeline/CaptionResult.h"
#include "pipeline/FolderRun.h"
#include "pipeline/ImageReport.h"
#include "pipeline/ImageRequest.h"
#include "pipeline/ImageTurn.h"
#include "pipeline/ServiceRefusals.h"

#include <QCoroTask>
#include <QDateTime>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <exception>
#include <optional>

namespace ostrelle {

/// What became of one file of a selection. One with neither success nor error was left alone.
struct AnalyzedFile {
    QString name;
    bool isBegun = false; ///< false when the program ended before
    bool success = false;
    std::optional<AnalyzerError> error = {}; ///< that a file failed
    std::exception_ptr cause = {};           ///< what lay beneath the error; null where nothing was thrown
};

/// The caption pipeline: single images, of which several may be under way at once, batches, and runs over a
/// folder. It must outlive its tasks.
class Analyzer : public QObject {
    Q_OBJECT

public:
    explicit Analyzer(AnalyzerParts parts);

    /// Captions the image if it needs a caption. True when it needs no further attempt: it was captioned, or
    /// it was left alone because it has a caption. Waits its turn behind other images and runs, and for other
    /// programs that caption the same image. Never throws; imageFinished() tells the details.
    QCoro::Task<bool> analyzeSingle(QString file);
    /// The same for an image of auto mode, which has seen to the roster: only while the image is what the
    /// scan saw. One that is done is in the manifest.
    QCoro::Task<CaptionOutcome> captionWatched(ImageRequest request);

    /// Gathers what is known of the image, asks the model and writes the caption. Throws what went wrong;
    /// an AnalyzerError with the code missingKey when no API key is stored.
    QCoro::Task<ImageReport> analyzeImage(QString file);

    /// The text that the model would be sent for the image as it is. Writes nothing and asks no model. Throws
    /// what went wrong.
    QCoro::Task<QString> promptFor(QString file);

    /// Captions the images of the folder that the settings name. Never throws; the status and an alert or a
    /// notification tell what happened.
    QCoro::Task<> recaptionFolder(FolderImages which);

    /// Captions up to ten images with one request. `startIndex` is the place of the first in the whole run,
    /// from 0. The run holds the turn and keeps the status. Images that another program has captioned since
    /// `begun` are left alone; without a moment, since this call. Never throws.
    QCoro::Task<BatchOutcome> processBatch(QStringList files, qint64 startIndex,
                                           std::optional<QDateTime> begun = {});

    /// processBatch() for files that the user chose; those that failed have an error.
    QCoro::Task<QList<AnalyzedFile>> analyzeFiles(QStringList files, qint64 startIndex,
                                                  std::optional<QDateTime> begun = {});

    /// An image has failed before it came here.
    void announceFailure(const ImageReport& report) { Q_EMIT imageFinished(report); }

Q_SIGNALS:
    /// An image is done with, except by analyzeImage(). The costs of a batch are not divided among its
    /// images.
    void imageFinished(const ostrelle::ImageReport& report);

private:
    using Ending = ImageTurn::Ending;

    /// How the image ended, and what kept it from being edited.
    struct Ended {
        Ending ending = Ending::failed;
        std::optional<EditConditions> conditions = {};
    };

    QCoro::Task<Ended> captionInTurn(ImageRequest request, ImageTurn::Sender sender);
    void beginProgress(const QString& file);
    void countEnding(Ending ending, const ImageTurn& image);
    /// What follows for the user; others have their turn meanwhile.
    QCoro::Task<> finishEnding(Ending ending, ImageReport report);
    void countSuccess(const ImageReport& report);
    void countFailure(const ImageReport& report, const std::exception_ptr& failure);
    /// Leaves the progress to be seen for a while. Other images and runs may begin meanwhile.
    QCoro::Task<> lingerAfterSuccess();
    QCoro::Task<> lingerAfterFailure(QString file, QString words);
    QCoro::Task<> askForKey();
    /// Notifies the user once of a service that refuses one image after the other.
    QCoro::Task<> notifyOfRefusals();
    void setProgress(const QString& name);
    void clearProgress();
    ImageListener announcer();
    bool isProgressOfOthers() const;

    AnalyzerParts m_parts;
    ServiceRefusals m_refusals;
    std::optional<ServiceRefusals::Cause> m_refusal; ///< while it holds
    int m_imagesInProgress = 0;
    bool m_isAskingForKey = false;
};

} // namespace ostrelle
