// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

namespace ostrelle {

/// How far a caption run has come. A run is of single files, or of batches with one request each.
struct RunProgress {
    qint64 processed = 0;
    qint64 failed = 0;
    qint64 totalFiles = 0;
    qint64 currentFileIndex = 0;
    bool isWaitingForAPI = false;      ///< a batch is in flight
    qint64 currentBatchStartIndex = 0; ///< negative when no batch is in flight
    qint64 currentBatchSize = 0;
    qint64 currentBatchNumber = 0; ///< counted from one
    qint64 totalBatchCount = 0;    ///< 0 when the run is not in batches
};

/// The images that auto mode has found and not ended yet, with those that have ended since it last had none.
struct QueueProgress {
    qint64 done = 0;
    qint64 total = 0;           ///< 0 when there are none
    double secondsPerImage = 0; ///< so far; 0 while none is done
    double dollars = 0;         ///< spent on them

    bool operator==(const QueueProgress&) const = default;
};

/// The fraction of the whole run, from 0 to 1.
double overallProgress(const RunProgress& run);

/// The fraction of the current batch, at most 1.
double batchProgress(const RunProgress& run);

/// The fraction of a run in batches, at most 1.
double batchedRunProgress(const RunProgress& run);

} // namespace ostrelle
