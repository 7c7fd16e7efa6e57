// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/Analyzer.h"

#include "core/Attempt.h"
#include "pipeline/AnalyzerError.h"
#include "pipeline/CaptionAcceptance.h"
#include "pipeline/ImageKind.h"
#include "pipeline/ImageRun.h"
#include "pipeline/MissingKey.h"
#include "pipeline/SidecarCreation.h"

#include <QFileInfo>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QString nameOf(const QString& file) {
    return QFileInfo(file).fileName();
}

} // namespace

Analyzer::Analyzer(AnalyzerParts parts) : m_parts(parts) {}

QCoro::Task<bool> Analyzer::analyzeSingle(QString file) {
    co_return co_await captionInTurn(file) == CaptionResult::done;
}

QCoro::Task<CaptionResult> Analyzer::captionInTurn(QString file) {
    const quint64 runsBefore = m_parts.turns.runsEnded();
    auto turn = co_await m_parts.turns.imageTurn();
    if (!turn) {
        co_return CaptionResult::notBegun;
    }
    ImageReport report;
    report.file = file;
    const Course course = co_await takeCourse(file, runsBefore, &report);
    turn.reset();
    Q_EMIT imageFinished(report);
    switch (course) {
    case Course::captioned:
        co_await lingerAfterSuccess();
        break;
    case Course::failed:
        co_await lingerAfterFailure(file, report.reason);
        break;
    case Course::keyMissing:
        co_await askForKey();
        break;
    case Course::done:
    case Course::refused:
        break;
    }
    const bool isDone = course == Course::captioned || course == Course::done;
    co_return isDone ? CaptionResult::done : CaptionResult::failed;
}

QCoro::Task<Analyzer::Course> Analyzer::takeCourse(QString file, quint64 runsBefore, ImageReport* report) {
    if (co_await wasOvertaken(file, runsBefore)) {
        report->outcome = ImageReport::Outcome::skipped;
        report->reason = u"It was captioned by another run meanwhile."_s;
        co_return Course::done;
    }
    const Gate gate = co_await passGates(file, report);
    if (gate != Gate::open) {
        co_return gate == Gate::done ? Course::done : Course::refused;
    }
    co_return co_await runImage(file, report);
}

QCoro::Task<bool> Analyzer::wasOvertaken(QString file, quint64 runsBefore) {
    if (m_parts.turns.runsEnded() == runsBefore) {
        co_return false;
    }
    co_return co_await m_parts.manifest.isProcessed(file);
}

QCoro::Task<Analyzer::Gate> Analyzer::passGates(QString file, ImageReport* report) {
    const QString name = nameOf(file);
    if (!m_parts.settings.codeReplacementsFile()) {
        m_parts.log.printAndAppend(
            u"[Analyzer] Auto mode: Skipping %1 - no code replacement file set"_s.arg(name));
        report->reason = u"No Code Replacements file is set."_s;
        co_return Gate::closed;
    }
    if (!isSupportedImage(file)) {
        report->reason = u"Files of this kind are not captioned."_s;
        co_return Gate::closed;
    }
    if (!isJpegImage(file) && !QFileInfo::exists(sidecarPath(file))) {
        const auto created = co_await attempt(createSidecar(m_parts, file));
        if (!created) {
            m_parts.log.printAndAppend(
                u"[Analyzer] Auto mode: failed to create XMP sidecar for RAW file %1: %2"_s.arg(
                    name, created.words()));
            report->reason = created.words();
            co_return Gate::closed;
        }
    }
    const bool isFinished = !m_parts.settings.alwaysOverwriteCaptions() && co_await hasRealCaption(file);
    if (isFinished) {
        m_parts.log.printAndAppend(
            u"[Analyzer] Auto mode: %1 already has caption, skipping (overwrite disabled)"_s.arg(name));
        report->outcome = ImageReport::Outcome::skipped;
        report->reason = u"It already has a caption."_s;
        co_return Gate::done;
    }
    m_parts.log.printAndAppend(u"[Analyzer] Auto mode: processing "_s + name);
    co_return Gate::open;
}

QCoro::Task<bool> Analyzer::hasRealCaption(QString file) {
    const ImageMetadata metadata(file, m_parts.xmp, m_parts.log.console());
    const auto caption = co_await attempt(metadata.readCaption());
    co_return caption&& isRealCaption(caption->value_or(QString()));
}

QCoro::Task<Analyzer::Course> Analyzer::runImage(QString file, ImageReport* report) {
    setProgress(nameOf(file));
    ++m_imagesInProgress;
    ImageRun run(m_parts, file);
    const auto executed = co_await attempt(run.execute());
    --m_imagesInProgress;
    *report = run.report(); // what was found and spent up to a failure, too
    if (executed) {
        countSuccess(*report);
        co_return Course::captioned;
    }
    report->reason = executed.words();
    const auto analyzerError = executed.failureAs<AnalyzerError>();
    if (analyzerError && analyzerError->code() == AnalyzerError::missingKey) {
        co_return Course::keyMissing;
    }
    countFailure(*report);
    co_return Course::failed;
}

void Analyzer::countSuccess(const ImageReport& report) {
    m_parts.status.setProcessed(m_parts.status.processed() + 1);
    m_parts.status.setLastMessage(u"Auto: Processed "_s + nameOf(report.file));
    if (report.outcome == ImageReport::Outcome::captioned) {
        m_parts.status.recordImageProcessed();
    }
}

void Analyzer::countFailure(const ImageReport& report) {
    m_parts.status.setFailed(m_parts.status.failed() + 1);
    m_parts.status.setTotalFailedAllTime(m_parts.status.totalFailedAllTime() + 1);
    m_parts.status.setLastMessage(u"Auto: Failed "_s + nameOf(report.file));
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
    ImageRun run(m_parts, file);
    co_await run.execute();
    co_return run.report();
}

QCoro::Task<QString> Analyzer::promptFor(QString file) {
    ImageRun run(m_parts, file);
    co_return co_await run.composePrompt();
}

QCoro::Task<> Analyzer::recaptionFolder(FolderImages which) {
    FolderRun run(m_parts, announcer());
    co_await run.execute(which);
}

QCoro::Task<BatchOutcome> Analyzer::processBatch(QStringList files, qint64 startIndex) {
    BatchRun batch(m_parts, files, startIndex, announcer());
    co_return co_await batch.execute();
}

QCoro::Task<QList<AnalyzedFile>> Analyzer::analyzeFiles(QStringList files, qint64 startIndex) {
    const BatchOutcome outcome = co_await processBatch(files, startIndex);
    QList<AnalyzedFile> analyzed;
    for (const BatchFileResult& result : outcome.results) {
        analyzed.append({.name = result.name, .success = result.success, .cause = result.cause});
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
