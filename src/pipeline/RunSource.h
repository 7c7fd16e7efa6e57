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
    QStringList illegible = {}; ///< paths as well as they can be shown: no file can be opened by them
};

/// Where the images of a run come from, and what is said about such runs.
class RunSource {
public:
    virtual ~RunSource() = default;

    /// Sees to what the run needs. False after the user has been told why there is no run.
    virtual QCoro::Task<bool> admit() = 0;
    /// The images, once the run has its turn; nothing after the user has been told why there is no run.
    virtual QCoro::Task<std::optional<RunImages>> find() = 0;
    /// Whether a run ends when the API key is gone, instead of failing image by image.
    virtual bool needsKeyThroughout() const = 0;
    /// Whether the status shows which batch of how many is in hand.
    virtual bool showsBatches() const = 0;

    /// The first status line.
    virtual QString openingMessage(qsizetype imageCount) const = 0;
    virtual void logBatches(qsizetype imageCount, qsizetype batchCount) = 0;
    virtual void logBatch(const QList<ImageOutcome>& images) = 0;
    /// Logs the end of a run that had images. Returns the last status line.
    virtual QString close(const RunTally& tally) = 0;
    /// What follows for the user when others may caption again.
    virtual QCoro::Task<> announce(RunTally tally) = 0;
};

} // namespace ostrelle
