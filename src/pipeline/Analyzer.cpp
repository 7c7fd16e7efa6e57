// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/Analyzer.h"

#include "pipeline/ImageRun.h"
#include "pipeline/MissingKey.h"

#include <QFileInfo>

#include "product/ApiKey.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QString nameOf(const QString& file) {
    return QFileInfo(file).fileName();
}

CaptionResult resultOf(ImageTurn::Ending ending) {
    using Ending = ImageTurn::Ending;
    switch (ending) {
    case Ending::captioned:
    case Ending::skipped:
    case Ending::edited:
        return CaptionResult::done;
    case Ending::dismissed:
        return CaptionResult::notBegun;
    case Ending::changed:
        return CaptionResult::changed;
    case Ending::unwritable:
        return CaptionResult::unwritable;
    case Ending::refused:
    case Ending::failed:
    case Ending::keyMissing:
        break;
    }
    return CaptionResult::failed;
}

} // namespace

Analyzer::Analyzer(AnalyzerParts parts) : m_parts(parts) {}

QCoro::Task<bool> Analyzer::analyzeSingle(QString file) {
    const ImageRequest request{.file = file, .seenAt = m_parts.clock.now()};
    const Ended ended = co_await captionInTurn(request, ImageTurn::Sender::user);
    co_return isDone(ended.ending);
}

QCoro::Task<CaptionOutcome> Analyzer::captionWatched(ImageRequest request) {
    const Ended ended = co_await captionInTurn(request, ImageTurn::Sender::autoMode);
    co_return {.result = resultOf(ended.ending), .conditions = ended.conditions};
}

QCoro::Task<Analyzer::Ended> Analyzer::captionInTurn(ImageRequest request, ImageTurn::Sender sender) {
    Ended ended;
    ImageReport report;
    {
        ImageTurn image(m_parts, request, sender, [this, &request] { beginProgress(request.file); });
        ended.ending = co_await image.execute();
        ended.conditions = image.editConditions();
        countEnding(ended.ending, image);
        report = image.report();
        if (m_refusal && ended.ending == Ending::failed) {
            report.warnings.append(m_refusal->words);
        }
    }
    // An image that auto mode looks at anew is not done with.
    const bool isLater = ended.ending == Ending::changed && sender == ImageTurn::Sender::autoMode;
    if (ended.ending != Ending::dismissed && !isLater) {
        Q_EMIT imageFinished(report);
    }
    co_await finishEnding(ended.ending, report);
    co_return ended;
}

void Analyzer::beginProgress(const QString& file) {
    setProgress(nameOf(file));
    ++m_imagesInProgress;
}

void Analyzer::countEnding(Ending ending, const ImageTurn& image) {
    m_imagesInProgress -= image.hasBegun() ? 1 : 0;
    switch (ending) {
    case Ending::captioned:
        countSuccess(image.report());
        break;
    case Ending::failed:
    case Ending::unwritable:
        countFailure(image.report(), image.failure());
        break;
    case Ending::dismissed:
    case Ending::refused:
    case Ending::skipped:
    case Ending::edited:
    case Ending::changed:
    case Ending::keyMissing:
        break;
    }
}

QCoro::Task<> Analyzer::finishEnding(Ending ending, ImageReport report) {
    switch (ending) {
    case Ending::captioned:
    case Ending::edited:
    case Ending::changed:
        co_await lingerAfterSuccess();
        break;
    case Ending::failed:
    case Ending::unwritable:
        co_await notifyOfRefusals();
        co_await lingerAfterFailure(report.file, report.reason);
        break;
    case Ending::keyMissing:
        co_await askForKey();
        break;
    case Ending::dismissed:
    case Ending::refused:
    case Ending::skipped:
        break;
    }
}

void Analyzer::countSuccess(const ImageReport& report) {
    m_parts.status.setProcessed(m_parts.status.processed() + 1);
    m_parts.status.setLastMessage(u"Auto: Processed "_s + nameOf(report.file));
    m_refusals.succeeded();
    m_refusal.reset();
    if (report.outcome == ImageReport::Outcome::captioned) {
        m_parts.status.recordImageProcessed();
    }
}

void Analyzer::countFailure(const ImageReport& report, const std::exception_ptr& failure) {
    const QString name = nameOf(report.file);
    m_parts.status.setFailed(m_parts.status.failed() + 1);
    m_parts.status.recordImageFailed();
    m_parts.status.setLastMessage(u"Auto: Failed "_s + name);
    m_refusal = m_refusals.failed(name, failure, apiKey(m_parts.defaults));
    if (m_refusal) {
        m_parts.status.setLastMessage(m_refusal->words);
    }
}

QCoro::Task<> Analyzer::notifyOfRefusals() {
    if (!m_refusal || !m_refusals.takeIsNew()) {
        co_return;
    }
    const ServiceRefusals::Cause cause = *m_refusal;
    const QStringList names = m_refusals.names();
    if (cause.isRateLimit) {
        co_await m_parts.notifications.postRateLimitFailure(names.size(), names, cause.words);
    } else {
        co_await m_parts.notifications.postProcessingResult(0, names.size(), names, cause.words);
    }
}

QCoro::Task<> Analyzer::lingerAfterSuccess() {
    if (m_parts.status.totalFiles() != 1) {
        co_return; // who counts the files clears the progress
    }
    co_await m_parts.clock.sleep(m_parts.progressLinger);
    if (!isProgressOfOthers()) {
        m_parts.log.print(u"[Analyzer] ⚡️ Clearing progress indicators"_s);
        clearProgress();
    }
}

QCoro::Task<> Analyzer::lingerAfterFailure(QString file, QString words) {
    co_await m_parts.clock.sleep(m_parts.progressLinger);
    if (!isProgressOfOthers()) {
        clearProgress();
        m_parts.log.print(u"[Analyzer] ⚡️ Clearing progress indicators (after error)"_s);
    }
    m_parts.log.printAndAppend(u"[Analyzer] Auto mode failed %1: %2"_s.arg(nameOf(file), words));
}

/// The progress that is shown is that of an image that is still in the works, or of a run.
bool Analyzer::isProgressOfOthers() const {
    return m_imagesInProgress > 0 || m_parts.turns.hasRun();
}

QCoro::Task<ImageReport> Analyzer::analyzeImage(QString file) {
    ImageRun run(m_parts, {.file = file, .seenAt = m_parts.clock.now()});
    co_await run.execute();
    co_return run.report();
}

QCoro::Task<QString> Analyzer::promptFor(QString file) {
    ImageRun run(m_parts, {.file = file, .seenAt = m_parts.clock.now()});
    co_return co_await run.composePrompt();
}

QCoro::Task<> Analyzer::recaptionFolder(FolderImages which) {
    FolderRun run(m_parts, announcer());
    co_await run.execute(which);
}

QCoro::Task<BatchOutcome> Analyzer::processBatch(QStringList files, qint64 startIndex,
                                                 std::optional<QDateTime> begun) {
    BatchRun batch(m_parts, files, startIndex, begun.value_or(m_parts.clock.now()), announcer());
    co_return co_await batch.execute();
}

QCoro::Task<QList<AnalyzedFile>> Analyzer::analyzeFiles(QStringList files, qint64 startIndex,
                                                        std::optional<QDateTime> begun) {
    const BatchOutcome outcome = co_await processBatch(files, startIndex, begun);
    QList<AnalyzedFile> analyzed;
    for (const BatchFileResult& result : outcome.results) {
        analyzed.append({.name = result.name,
                         .isBegun = result.isBegun,
                         .success = result.success,
                         .cause = result.cause});
        if (result.failed) {
            analyzed.last().error = AnalyzerError(AnalyzerError::imageFailed, u"Failed to process image"_s);
        }
    }
    co_return analyzed;
}

ImageListener Analyzer::announcer() {
    return [this](const ImageReport& report) { Q_EMIT imageFinished(report); };
}

/// All images of a scan miss the key at once; the user is asked once.
QCoro::Task<> Analyzer::askForKey() {
    clearProgress();
    m_parts.settings.setAutoMode(false);
    if (m_isAskingForKey) {
        co_return;
    }
    m_isAskingForKey = true;
    const int button = co_await m_parts.alerts.show(missingKeyAlert());
    m_isAskingForKey = false;
    if (button == 0) {
        Q_EMIT m_parts.events.showSettingsWindow();
    }
    m_parts.status.setLastMessage(missingKeyMessage());
}

void Analyzer::setProgress(const QString& name) {
    StatusStore& status = m_parts.status;
    m_parts.log.print(u"[Analyzer] ⚡️ Setting isProcessing=true for "_s + name);
    status.setIsProcessing(true);
    status.setCurrentFileName(name);
    if (status.totalFiles() == 0) {
        status.setTotalFiles(1);
        status.setCurrentFileIndex(1);
    }
    m_parts.log.print(u"[Analyzer] ⚡️ Progress set: isProcessing=%1, fileName=%2, index=%3/%4"_s.arg(
        status.isProcessing() ? u"true"_s : u"false"_s, status.currentFileName().value_or(u"nil"_s),
        QString::number(status.currentFileIndex()), QString::number(status.totalFiles())));
}

void Analyzer::clearProgress() {
    m_parts.status.setIsProcessing(false);
    m_parts.status.setCurrentFileName(std::nullopt);
    m_parts.status.setCurrentFileIndex(0);
    m_parts.status.setTotalFiles(0);
}

} // namespace ostrelle
