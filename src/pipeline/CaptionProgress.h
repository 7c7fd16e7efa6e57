// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerLog.h"
#include "pipeline/ImageOutcome.h"
#include "platform/Clock.h"
#include "state/StatusStore.h"

#include <QString>
#include <chrono>
#include <memory>

namespace ostrelle {

/// Shows how far the captioning has come: writes the run's fields of the status, on which no decision
/// depends. A finished image stays on show for a moment; nothing waits for that.
class CaptionProgress {
public:
    /// How long a finished image stays on show.
    static constexpr std::chrono::milliseconds usualLinger = std::chrono::seconds(2);

    /// All references must outlive the object.
    CaptionProgress(StatusStore& status, AnalyzerLog& log, Clock& clock,
                    std::chrono::milliseconds linger = usualLinger);

    void showMessage(const QString& message) { m_status.setLastMessage(message); }

    // Single images, of which several may be under way.

    /// The next image is number `number` of `total`, counted from 1. With more than one, the progress stays
    /// on show between images, until one fails or clear() is called.
    void expectImage(qint64 number, qint64 total);
    /// The same for a file from a server, which counts as being captioned from now on. Does nothing while a
    /// run shows its progress.
    void expectDownloaded(qint64 number, qint64 total);
    /// Clears the progress of such files, unless others are under way.
    void endDownloaded();
    void beginImage(const QString& name);
    /// Ends an image that began: counts it and shows its outcome. With a single image, or after a failure,
    /// the progress is cleared when the linger is over, unless another image or run is then under way; at
    /// once when the key is missing.
    void endImage(const ImageOutcome& outcome);
    void clear();

    // A run over many images.

    /// Shows that a run does not begin, with the number of failures and the message why.
    void refuseRun(qint64 failed, const QString& message);
    /// Resets the counters. Without images only the message is shown, and no endRun() follows.
    void beginRun(qint64 imageCount, const QString& message);
    enum class RunEnd { completed, broken };
    /// Clears the progress but keeps the counters. The time of a completed run is recorded.
    void endRun(RunEnd end, const QString& message);
    /// Batch `number` of `count`, counted from 1; `startIndex` is the place of its first image in the run,
    /// from 0, and `size` its number of images.
    void beginBatch(qint64 number, qint64 count, qint64 startIndex, qint64 size);

    // The images of a batch; indices are places in the whole run, from 0.

    void prepareBatch(qint64 startIndex, qint64 size);
    void prepareImage(qint64 index, const QString& name);
    void askForBatch(qint64 startIndex, qint64 size);
    void stopAsking() { m_status.setIsWaitingForAPI(false); }
    void writeBatch();
    void takeUpImage(qint64 index, const QString& name);
    /// The form of the status line: with how many images of the run are done, or with the image's name only.
    enum class Mention { inBatch, byItself };
    void countCaptioned(const QString& name, Mention mention);
    void countFailed(const QString& name, Mention mention);

private:
    void clearLater(const QString& logLine);
    QString doneOfTotal() const;

    StatusStore& m_status;
    AnalyzerLog& m_log;
    Clock& m_clock;
    std::chrono::milliseconds m_linger;
    std::unique_ptr<Timer> m_clearing;
    int m_imagesUnderWay = 0;
    bool m_isRunUnderWay = false;
    bool m_hasTotal = false;       ///< the status shows the number of images
    bool m_isOneOfSeveral = false; ///< several single images are expected
};

} // namespace ostrelle
