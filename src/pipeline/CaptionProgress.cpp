// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/CaptionProgress.h"

#include "core/Text.h"

#include <QFileInfo>
#include <algorithm>
#include <optional>

namespace ostrelle {

using namespace Qt::StringLiterals;

CaptionProgress::CaptionProgress(StatusStore& status, AnalyzerLog& log, Clock& clock,
                                 std::chrono::milliseconds linger)
    : m_status(status), m_log(log), m_clock(clock), m_linger(linger) {}

void CaptionProgress::expectImage(qint64 number, qint64 total) {
    m_clearing.reset(); // of the image before it
    m_hasTotal = true;
    m_isOneOfSeveral = total > 1;
    m_status.setTotalFiles(total);
    m_status.setCurrentFileIndex(number);
}

void CaptionProgress::expectDownloaded(qint64 number, qint64 total) {
    if (m_isRunUnderWay) {
        return;
    }
    expectImage(number, total);
    m_status.setIsProcessing(true);
}

void CaptionProgress::endDownloaded() {
    m_isOneOfSeveral = false; // so that another image under way clears its own progress
    if (m_isRunUnderWay || m_imagesUnderWay > 0) {
        return;
    }
    m_clearing.reset();
    clear();
}

void CaptionProgress::beginImage(const QString& name) {
    ++m_imagesUnderWay;
    m_log.print(u"[Analyzer] ⚡️ Setting isProcessing=true for "_s + name);
    m_status.setIsProcessing(true);
    m_status.setCurrentFileName(name);
    if (!m_hasTotal) {
        expectImage(1, 1);
    }
    m_log.print(u"[Analyzer] ⚡️ Progress set: isProcessing=true, fileName=%1, index=%2/%3"_s.arg(
        name, QString::number(m_status.currentFileIndex()), QString::number(m_status.totalFiles())));
}

void CaptionProgress::endImage(const ImageOutcome& outcome) {
    --m_imagesUnderWay;
    const QString name = QFileInfo(outcome.file).fileName();
    switch (outcome.kind) {
    case OutcomeKind::keyMissing:
        clear();
        return;
    case OutcomeKind::failed:
    case OutcomeKind::unwritable:
        m_status.setFailed(m_status.failed() + 1);
        m_status.recordImageFailed();
        m_status.setLastMessage(u"Auto: Failed "_s + name);
        clearLater(u"[Analyzer] ⚡️ Clearing progress indicators (after error)"_s);
        return;
    case OutcomeKind::captioned:
        m_status.recordImageProcessed();
        [[fallthrough]];
    case OutcomeKind::unchanged:
    case OutcomeKind::skipped:
        m_status.setProcessed(m_status.processed() + 1);
        m_status.setLastMessage(u"Auto: Processed "_s + name);
        break;
    default: // neither written nor failed: not counted
        break;
    }
    if (!m_isOneOfSeveral) {
        clearLater(u"[Analyzer] ⚡️ Clearing progress indicators"_s);
    }
}

void CaptionProgress::clearLater(const QString& logLine) {
    m_clearing = m_clock.after(m_linger, [this, logLine] {
        if (m_imagesUnderWay > 0 || m_isRunUnderWay) {
            return; // the status shows their progress
        }
        m_log.print(logLine);
        clear();
    });
}

void CaptionProgress::clear() {
    m_hasTotal = false;
    m_isOneOfSeveral = false;
    m_status.setIsProcessing(false);
    m_status.setCurrentFileName(std::nullopt);
    m_status.setCurrentFileIndex(0);
    m_status.setTotalFiles(0);
}

void CaptionProgress::refuseRun(qint64 failed, const QString& message) {
    m_status.setProcessed(0);
    m_status.setPending(0);
    m_status.setFailed(failed);
    m_status.setLastMessage(message);
}

void CaptionProgress::beginRun(qint64 imageCount, const QString& message) {
    m_isRunUnderWay = imageCount != 0;
    m_hasTotal = m_isRunUnderWay;
    m_status.setPending(imageCount);
    m_status.setProcessed(0);
    m_status.setFailed(0);
    m_status.setLastMessage(message);
    m_status.setIsProcessing(m_isRunUnderWay);
    m_status.setTotalFiles(imageCount);
    m_status.setCurrentFileIndex(0);
    m_status.setIsWaitingForAPI(false);
    m_status.clearBatch();
    m_status.beginTimedRun(imageCount);
}

void CaptionProgress::endRun(RunEnd end, const QString& message) {
    m_isRunUnderWay = false;
    m_status.setLastMessage(message);
    clear();
    m_status.setIsWaitingForAPI(false);
    m_status.clearBatch();
    if (end == RunEnd::completed) {
        m_status.recordBatchFinished();
    }
}

void CaptionProgress::beginBatch(qint64 number, qint64 count, qint64 startIndex, qint64 size) {
    m_status.setCurrentBatchNumber(number);
    m_status.setTotalBatchCount(count);
    m_status.setCurrentBatchSize(size);
    m_status.setCurrentBatchStartIndex(startIndex);
    m_status.setLastMessage(
        u"Processing batch %1 of %2 (%3 image%4)..."_s.arg(number).arg(count).arg(size).arg(plural(size)));
    m_status.setCurrentFileName(std::nullopt);
    m_status.setCurrentFileIndex(std::max(startIndex + 1, m_status.currentFileIndex()));
}

void CaptionProgress::prepareBatch(qint64 startIndex, qint64 size) {
    m_status.setLastMessage(u"Preparing %1 image%2 for batch processing..."_s.arg(size).arg(plural(size)));
    m_status.setCurrentFileName(std::nullopt);
    m_status.setCurrentFileIndex(std::max(startIndex + 1, m_status.currentFileIndex()));
}

void CaptionProgress::prepareImage(qint64 index, const QString& name) {
    takeUpImage(index, name);
    m_status.setLastMessage(u"Uploading: "_s + name);
}

void CaptionProgress::askForBatch(qint64 startIndex, qint64 size) {
    m_status.setLastMessage(u"Uploaded %1 image%2. Generating captions..."_s.arg(size).arg(plural(size)));
    m_status.setCurrentFileName(std::nullopt);
    m_status.setIsWaitingForAPI(true);
    m_status.setCurrentBatchStartIndex(startIndex);
    m_status.setCurrentBatchSize(size);
}

void CaptionProgress::writeBatch() {
    m_status.setLastMessage(u"Writing captions to files..."_s);
    m_status.setCurrentFileName(std::nullopt);
    m_status.setIsWaitingForAPI(false);
}

void CaptionProgress::takeUpImage(qint64 index, const QString& name) {
    m_status.setCurrentFileIndex(index + 1);
    m_status.setCurrentFileName(name);
}

void CaptionProgress::countCaptioned(const QString& name, Mention mention) {
    m_status.setProcessed(m_status.processed() + 1);
    m_status.setPending(m_status.pending() - 1);
    if (mention == Mention::inBatch) {
        m_status.setCurrentFileName(name);
        m_status.setLastMessage(u"✓ %1 (%2)"_s.arg(name, doneOfTotal()));
    } else {
        m_status.setLastMessage(u"Processed: "_s + name);
    }
    m_status.recordImageProcessed();
}

void CaptionProgress::countFailed(const QString& name, Mention mention) {
    m_status.setFailed(m_status.failed() + 1);
    m_status.setPending(m_status.pending() - 1);
    if (mention == Mention::inBatch) {
        m_status.setCurrentFileName(name);
        m_status.setLastMessage(u"✗ Failed: %1 (%2)"_s.arg(name, doneOfTotal()));
    } else {
        m_status.setLastMessage(u"Failed: "_s + name);
    }
    m_status.recordImageFailed();
}

QString CaptionProgress::doneOfTotal() const {
    return u"%1/%2"_s.arg(m_status.processed() + m_status.failed()).arg(m_status.totalFiles());
}

} // namespace ostrelle
