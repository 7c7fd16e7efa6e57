// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/RunTally.h"

#include <QCoroTask>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// The images that a run is to caption.
struct RunImages {
    QStringList files;          ///< paths
    QStringList illegible = {}; ///< paths with names that are not UTF-8: to be shown, not to be opened
};

/// Where the images of a run come from, and what the user and the log see of such runs.
class RunSource {
public:
    virtual ~RunSource() = default;

    /// Provides or checks what the run needs, before it waits for its turn. False if there is no run, once
    /// the user has been shown why.
    virtual QCoro::Task<bool> admit() = 0;
    /// Finds the images, when the run has its turn. Nothing if there is no run, once the user has been shown
    /// why.
    virtual QCoro::Task<std::optional<RunImages>> find() = 0;
    /// Whether a run ends when the API key is gone; otherwise it goes on and fails image by image.
    virtual bool needsKeyThroughout() const = 0;
    /// Whether the status shows the number of the batch under way, and of how many.
    virtual bool showsBatches() const = 0;

    /// The first status line. The count includes illegible images and may be 0.
    virtual QString openingMessage(qsizetype imageCount) const = 0;
    /// Logs how a run that has images is divided. The count excludes illegible images.
    virtual void logBatches(qsizetype imageCount, qsizetype batchCount) = 0;
    /// Logs a batch that has ended.
    virtual void logBatch(const QList<ImageOutcome>& images) = 0;
    /// Ends a run that had images, while it still has its turn: logs it and returns the last status line.
    virtual QString close(const RunTally& tally) = 0;
    /// Shows the user the result of a run that completed or ended for want of a key, also one without images.
    /// Called after the turn has passed on.
    virtual QCoro::Task<> announce(RunTally tally) = 0;
};

} // namespace ostrelle
