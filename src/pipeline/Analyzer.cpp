// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/Analyzer.h"

#include "core/Attempt.h"
#include "pipeline/AnalyzerError.h"
#include "pipeline/CaptionAcceptance.h"
#include "pipeline/ImageKind.h"
#include "pipeline/ImageRun.h"
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
    ImageReport report;
    report.file = file;
    const Gate gate = co_await passGates(file, &report);
    bool isDone = gate == Gate::done;
    if (gate == Gate::open) {
        isDone = co_await runImage(file, &report);
    }
    Q_EMIT imageFinished(report);
    co_return isDone;
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

QCoro::Task<bool> Analyzer::runImage(QString file, ImageReport* report) {
    const QString name = nameOf(file);
    setProgress(name);
    ImageRun run(m_parts, file);
    const auto executed = co_await attempt(run.execute());
    *report = run.report(); // what was found and spent up to a failure, too
    if (!executed) {
        report->reason = executed.words();
        const auto analyzerError = executed.failureAs<AnalyzerError>();
        if (analyzerError && analyzerError->code() == AnalyzerError::missingKey) {
            co_await askForKey();
        } else {
            co_await countFailure(name, executed.words());
        }
        co_return false;
    }
    m_parts.status.setProcessed(m_parts.status.processed() + 1);
    m_parts.status.setLastMessage(u"Auto: Processed "_s + name);
    if (report->outcome == ImageReport::Outcome::captioned) {
        m_parts.status.recordImageProcessed();
    }
    if (m_parts.status.totalFiles() == 1) { // nobody else counts this run
        co_await m_parts.clock.sleep(m_parts.progressLinger);
        m_parts.log.print(u"[Analyzer] ⚡️ Clearing progress indicators"_s);
        clearProgress();
    }
    co_return true;
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

QCoro::Task<> Analyzer::askForKey() {
    clearProgress();
    m_parts.settings.setAutoMode(false);
    Alert alert;
    alert.title = u"OpenAI API Key Required"_s;
    alert.text = u"Please enter your OpenAI API key in Settings to continue captioning images."_s;
    alert.buttons = QStringList{u"Open Settings"_s, u"Cancel"_s};
    const int button = co_await m_parts.alerts.show(alert);
    if (button == 0) {
        Q_EMIT m_parts.events.showSettingsWindow();
    }
    m_parts.status.setLastMessage(u"Please add your API key in Settings."_s);
}

QCoro::Task<> Analyzer::countFailure(QString name, QString words) {
    m_parts.status.setFailed(m_parts.status.failed() + 1);
    m_parts.status.setTotalFailedAllTime(m_parts.status.totalFailedAllTime() + 1);
    m_parts.status.setLastMessage(u"Auto: Failed "_s + name);
    co_await m_parts.clock.sleep(m_parts.progressLinger);
    clearProgress();
    m_parts.log.print(u"[Analyzer] ⚡️ Clearing progress indicators (after error)"_s);
    m_parts.log.printAndAppend(u"[Analyzer] Auto mode failed %1: %2"_s.arg(name, words));
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
