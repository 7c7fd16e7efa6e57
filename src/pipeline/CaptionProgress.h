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

/// Shows how far the captioning is: writes the run's fields of the status, which nobody reads back to decide
/// anything. A finished image stays to be seen for a moment, and nobody waits for that.
class CaptionProgress {
public:
    /// How long a finished image stays to be seen.
    static constexpr std::chrono::milliseconds usualLinger = std::chrono::seconds(2);

    /// All references have to outlive the object.
    CaptionProgress(StatusStore& status, AnalyzerLog& log, Clock& clock,
                    std::chrono::milliseconds linger = usualLinger);

    void showMessage(const QString& message) { m_status.setLastMessage(message); }

    // Images one by one, of which several may be under way.

    /// The next image is this one of so many, from 1: the progress stays between them.
    void expectImage(qint64 number, qint64 total);
    void beginImage(const QString& name);
    /// Of an image that was begun.
    void endImage(const ImageOutcome& outcome);
    void clear();

    // A run over many images.

    /// The run does not begin; the message says why.
    void refuseRun(qint64 failed, const QString& message);
    void beginRun(qint64 imageCount, const QString& message);
    enum class RunEnd { completed, broken };
    void endRun(RunEnd end, const QString& message);
    /// Batch `number` of `count`, both from 1, whose first image has this place in the run, from 0.
    void beginBatch(qint64 number, qint64 count, qint64 startIndex, qint64 size);

    // The images of a batch, by their place in the whole run, from 0.

    void prepareBatch(qint64 startIndex, qint64 size);
    void prepareImage(qint64 index, const QString& name);
    void askForBatch(qint64 startIndex, qint64 size);
    void stopAsking() { m_status.setIsWaitingForAPI(false); }
    void writeBatch();
    void takeUpImage(qint64 index, const QString& name);
    /// Whether an image is mentioned in one line of a run's many, or by itself.
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
    bool m_hasTotal = false;       ///< the status shows how many images there are
    bool m_isOneOfSeveral = false; ///< of images that are expected one by one
};

} // namespace ostrelle
