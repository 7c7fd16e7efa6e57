// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerError.h"
#include "pipeline/AnalyzerParts.h"
#include "pipeline/BatchRun.h"
#include "pipeline/CaptionResult.h"
#include "pipeline/FolderRun.h"
#include "pipeline/ImageReport.h"

#include <QCoroTask>
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
    /// it was left alone because it has a caption. Waits its turn behind other images and runs. Never throws;
    /// imageFinished() tells the details.
    QCoro::Task<bool> analyzeSingle(QString file);
    /// analyzeSingle(), which knows images that were sent away from those that failed.
    QCoro::Task<CaptionResult> captionInTurn(QString file);

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
    /// from 0. The run holds the turn and keeps the status. Never throws.
    QCoro::Task<BatchOutcome> processBatch(QStringList files, qint64 startIndex);

    /// processBatch() for files that the user chose; those that failed have an error.
    QCoro::Task<QList<AnalyzedFile>> analyzeFiles(QStringList files, qint64 startIndex);

Q_SIGNALS:
    /// An image is done with, except by analyzeImage(). The costs of a batch are not divided among its
    /// images.
    void imageFinished(const ostrelle::ImageReport& report);

private:
    enum class Gate { open, done, closed };
    /// How an image's turn ended.
    enum class Course { done, refused, captioned, failed, keyMissing };

    QCoro::Task<Course> takeCourse(QString file, quint64 runsBefore, ImageReport* report);
    /// True for an image that a run has captioned while it waited for its turn.
    QCoro::Task<bool> wasOvertaken(QString file, quint64 runsBefore);
    /// The cheap tests before any work: what they decide stands in the report.
    QCoro::Task<Gate> passGates(QString file, ImageReport* report);
    QCoro::Task<bool> hasRealCaption(QString file);
    QCoro::Task<Course> runImage(QString file, ImageReport* report);
    void countSuccess(const ImageReport& report);
    void countFailure(const ImageReport& report);
    /// Leaves the progress to be seen for a while. Other images and runs may begin meanwhile.
    QCoro::Task<> lingerAfterSuccess();
    QCoro::Task<> lingerAfterFailure(QString file, QString words);
    QCoro::Task<> askForKey();
    void setProgress(const QString& name);
    void clearProgress();
    ImageListener announcer();
    bool isProgressOfOthers() const;

    AnalyzerParts m_parts;
    int m_imagesInProgress = 0;
    bool m_isAskingForKey = false;
};

} // namespace ostrelle
