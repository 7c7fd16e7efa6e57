// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/RunProgress.h"

#include <algorithm>

namespace ostrelle {

namespace {

// Nothing can be counted while a batch is in flight, so the bars assume that it is some way through, and stay
// short of the end.
constexpr double shareOfBatchInRun = 0.7;
constexpr double shareOfBatchInFlight = 0.8;
constexpr double nearlyDone = 0.99;

double real(qint64 count) {
    return static_cast<double>(count);
}

double done(const RunProgress& run) {
    return real(run.processed) + real(run.failed);
}

} // namespace

double overallProgress(const RunProgress& run) {
    if (run.totalFiles < 1) {
        return 0;
    }
    const double total = real(run.totalFiles);
    const double counted = std::max(done(run), real(run.currentFileIndex)) / total;
    if (!run.isWaitingForAPI || run.currentBatchStartIndex < 0) {
        return counted;
    }
    const double assumed =
        (real(run.currentBatchStartIndex) + real(run.currentBatchSize) * shareOfBatchInRun) / total;
    return std::max(counted, std::min(assumed, nearlyDone));
}

double batchProgress(const RunProgress& run) {
    if (run.totalFiles < 1 || run.currentBatchSize < 1) {
        return 0;
    }
    const double counted = (done(run) - real(run.currentBatchStartIndex)) / real(run.currentBatchSize);
    return run.isWaitingForAPI ? std::clamp(counted, shareOfBatchInFlight, nearlyDone)
                               : std::min(counted, 1.0);
}

double batchedRunProgress(const RunProgress& run) {
    if (run.totalBatchCount < 1) {
        return 0;
    }
    if (run.totalFiles < 1) { // the fields of a run that has just ended are cleared one by one
        return done(run) > 0 ? 1 : 0;
    }
    const double total = real(run.totalFiles);
    if (run.isWaitingForAPI && run.currentBatchNumber >= 1) {
        return std::min((done(run) + real(run.currentBatchSize) * shareOfBatchInFlight) / total, nearlyDone);
    }
    return std::min(done(run) / total, 1.0);
}

} // namespace ostrelle
