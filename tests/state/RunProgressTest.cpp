// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/RunProgress.h"

#include <gtest/gtest.h>

namespace ostrelle {

TEST(RunProgressTest, FractionsOfTheRunTheBatchAndTheRunInBatches) {
    const struct {
        const char* name;
        RunProgress run; // processed, failed, total, index, in flight; batch: start, size, number, count
        double overall;
        double batch;
        double batchedRun;
    } rows[] = {
        {"no run", {0, 0, 0, 4, true, 0, 5, 1, 2}, 0, 0, 0},
        {"fields of an ended run, half cleared", {3, 1, 0, 0, false, 0, 5, 1, 2}, 0, 0, 1},
        {"not in batches", {5, 0, 10, 0, false, 0, 0, 0, 0}, 0.5, 0, 0},
        {"failures count", {2, 1, 10, 0, false, 0, 4, 1, 3}, 0.3, 0.75, 0.3},
        {"the index is ahead", {2, 0, 10, 4, false, 0, 4, 1, 3}, 0.4, 0.5, 0.2},
        {"the index is behind", {5, 0, 10, 4, false, 4, 4, 2, 3}, 0.5, 0.25, 0.5},
        {"the batch is over", {9, 0, 10, 0, false, 0, 4, 1, 3}, 0.9, 1, 0.9},
        {"more than was to be done", {11, 0, 10, 0, false, 9, 1, 3, 3}, 1.1, 1, 1},
        {"first batch in flight", {0, 0, 10, 0, true, 0, 5, 1, 2}, 0.35, 0.8, 0.4},
        {"later batch in flight", {5, 0, 20, 0, true, 5, 5, 2, 4}, 0.425, 0.8, 0.45},
        {"more is done than assumed", {9, 0, 100, 0, true, 0, 10, 1, 10}, 0.09, 0.9, 0.17},
        {"all of the batch is done", {4, 0, 10, 0, true, 0, 4, 1, 3}, 0.4, 0.99, 0.72},
        {"in flight, but before a batch", {1, 0, 10, 0, true, -1, 9, 0, 2}, 0.1, 0.8, 0.1},
        {"short of the end", {9, 0, 10, 0, true, 9, 9, 2, 2}, 0.99, 0.8, 0.99},
        {"unless all is done", {10, 0, 10, 0, true, 9, 9, 2, 2}, 1, 0.8, 0.99},
    };
    for (const auto& row : rows) {
        EXPECT_DOUBLE_EQ(overallProgress(row.run), row.overall) << row.name;
        EXPECT_DOUBLE_EQ(batchProgress(row.run), row.batch) << row.name;
        EXPECT_DOUBLE_EQ(batchedRunProgress(row.run), row.batchedRun) << row.name;
    }
}

} // namespace ostrelle
