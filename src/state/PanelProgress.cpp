// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/PanelProgress.h"

#include "core/Text.h"

#include <algorithm>
#include <cmath>

namespace ostrelle {

using namespace Qt::StringLiterals;
using Style = ProgressRow::Style;

namespace {

/// A run that skips images counts fewer than it has seen, which can make a batch's fraction negative.
double barOf(double fraction) {
    return std::clamp(fraction, 0.0, 1.0);
}

QList<ProgressRow> remoteRunRows(const StatusStore& status) {
    return {{.fraction = barOf(status.overallProgress())},
            {.text = u"Processing and Captioning: "_s + status.currentFileName().value_or(QString()),
             .count = u"%1/%2"_s.arg(status.currentFileIndex()).arg(status.totalFiles()),
             .isElided = true}};
}

QList<ProgressRow> transferRows(const StatusStore& status) {
    QList<ProgressRow> rows;
    const QString message = status.ftpStatusMessage().value_or(QString());
    for (const QString& line : message.split(u'\n', Qt::SkipEmptyParts)) { // a failure, and its reason
        rows.append({.text = line, .style = Style::small});
    }
    if (status.ftpIsDownloading() && status.ftpTotalBytesToDownload() > 0) {
        rows.append({.text = u"%1 of %2"_s.arg(dataSize(status.ftpBytesDownloaded()),
                                               dataSize(status.ftpTotalBytesToDownload())),
                     .style = Style::small,
                     .fraction = barOf(status.ftpDownloadProgress())});
    }
    const QStringList remarks = status.ftpRemarks();
    for (const QString& remark : remarks) {
        rows.append({.text = remark, .style = Style::small});
    }
    return rows;
}

QString captionLine(const StatusStore& status) {
    return status.currentFileName().value_or(status.lastMessage().value_or(u"Processing..."_s));
}

/// How long the rest will take; empty if nobody knows.
QString timeLeft(double secondsPerImage, qint64 imagesLeft) {
    constexpr double longestInSeconds = 90;
    const double seconds = secondsPerImage * static_cast<double>(imagesLeft);
    if (seconds < 1) {
        return {};
    }
    return seconds < longestInSeconds ? u" · about %1 s"_s.arg(std::lround(seconds))
                                      : u" · about %1 min"_s.arg(std::lround(seconds / 60));
}

/// Of a run over several images.
QString doneOfTotal(const StatusStore& status) {
    const qint64 done = status.processed() + status.failed();
    const qint64 total = status.totalFiles();
    return total < 2 ? QString()
                     : u"%1 of %2"_s.arg(done).arg(total) +
                           timeLeft(status.averageProcessingTime(), std::max<qint64>(total - done, 0));
}

/// Of auto mode: what waits, rests and is in the works, as one.
QList<ProgressRow> queueRows(const StatusStore& status) {
    const QueueProgress queue = status.queue();
    const double average = status.averageProcessingTime();
    QString count =
        u"%1 of %2"_s.arg(queue.done).arg(queue.total) +
        timeLeft(queue.secondsPerImage > 0 ? queue.secondsPerImage : average, queue.total - queue.done);
    if (queue.dollars > 0) {
        count += u" · $"_s + QString::number(queue.dollars, 'f', 2);
    }
    return {{.text = u"%1 images"_s.arg(queue.total), .style = Style::heading},
            {.text = status.currentFileName().value_or(u"Waiting for new files to be complete"_s),
             .count = count,
             .isElided = true,
             .fraction = barOf(static_cast<double>(queue.done) / static_cast<double>(queue.total))}};
}

QList<ProgressRow> localRunRows(const StatusStore& status) {
    const bool isInBatches = status.totalBatchCount() >= 2;
    QList<ProgressRow> rows{{.text = isInBatches ? u"Processing %1 images total"_s.arg(status.totalFiles())
                                                 : u"%1 images"_s.arg(status.totalFiles()),
                             .style = Style::heading},
                            {.text = captionLine(status), .count = doneOfTotal(status), .isElided = true}};
    if (status.totalBatchCount() >= 1) {
        const qint64 size = status.currentBatchSize();
        rows.append(
            {.text = u"Batch %1: %2 image%3"_s.arg(status.currentBatchNumber()).arg(size).arg(plural(size)),
             .count = status.isWaitingForAPI() ? u"waiting for captions"_s : QString(),
             .fraction = barOf(status.batchProgress())});
    }
    if (status.totalBatchCount() < 1) {
        rows.append({.fraction = barOf(status.overallProgress())});
    }
    if (isInBatches) {
        rows.append({.text = u"Batch %1/%2"_s.arg(status.currentBatchNumber()).arg(status.totalBatchCount()),
                     .fraction = barOf(status.batchedRunProgress())});
    }
    return rows;
}

QList<ProgressRow> rowsOf(SourceType source, const StatusStore& status) {
    if (source == SourceType::local) {
        const bool isRun = status.isProcessing() && status.totalFiles() > 1; // not of auto mode's images
        if (status.queue().total > 1 && !isRun) {
            return queueRows(status);
        }
        return status.isProcessing() ? localRunRows(status) : QList<ProgressRow>();
    }
    // The latest words of the server's side stay to be read until the next poll.
    return status.isProcessing() ? remoteRunRows(status) : transferRows(status);
}

} // namespace

QList<ProgressRow> progressRows(SourceType source, const StatusStore& status) {
    QList<ProgressRow> rows = rowsOf(source, status);
    if (status.isPaused()) {
        rows.append(
            {.text = u"Paused. Images in the works are finished; no others begin."_s, .style = Style::small});
    }
    return rows;
}

bool hasWork(const StatusStore& status) {
    return status.isProcessing() || status.queue().total > 0;
}

std::optional<QString> lastMessageLine(const StatusStore& status) {
    const bool isOnTheSwitch = status.lastMessage() == u"Auto mode: Off";
    return status.isProcessing() || isOnTheSwitch ? std::nullopt : status.lastMessage();
}

std::optional<QString> autoModeLine(bool isOn, const StatusStore& status) {
    if (!isOn) {
        return std::nullopt;
    }
    const std::optional<qint64> seconds = status.nextScanCountdown();
    return seconds ? u"Auto Processing: On (next scan: %1s)"_s.arg(*seconds) : u"Auto Processing: On"_s;
}

} // namespace ostrelle
