// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/RunProgress.h"

#include <gtest/gtest.h>

#include <vector>

namespace ostrelle {

namespace {

struct Row {
    const char* name;
    RunProgress run;
    double expected;
};

TEST(RunProgressTest, Overall) {
    const std::vector<Row> rows = {
        {"no run", {.processed = 3}, 0},
        {"failures count", {.processed = 2, .failed = 1, .totalFiles = 10}, 0.3},
        {"the index may be ahead", {.processed = 2, .totalFiles = 10, .currentFileIndex = 4}, 0.4},
        {"or behind", {.processed = 5, .totalFiles = 10, .currentFileIndex = 4}, 0.5},
        {"70 % into the batch in flight",
         {.totalFiles = 10, .isWaitingForAPI = true, .currentBatchStartIndex = 0, .currentBatchSize = 5},
         0.35},
        {"later batch",
         {.processed = 5,
          .totalFiles = 10,
          .isWaitingForAPI = true,
          .currentBatchStartIndex = 5,
          .currentBatchSize = 5},
         0.85},
        {"more is done than assumed",
         {.processed = 5,
          .totalFiles = 10,
          .isWaitingForAPI = true,
          .currentBatchStartIndex = 0,
          .currentBatchSize = 5},
         0.5},
        {"no batch in flight",
         {.processed = 1,
          .totalFiles = 10,
          .isWaitingForAPI = true,
          .currentBatchStartIndex = -1,
          .currentBatchSize = 9},
         0.1},
        {"short of the end",
         {.processed = 9,
          .totalFiles = 10,
          .isWaitingForAPI = true,
          .currentBatchStartIndex = 9,
          .currentBatchSize = 9},
         0.99},
        {"unless all is done",
         {.processed = 10,
          .totalFiles = 10,
          .isWaitingForAPI = true,
          .currentBatchStartIndex = 9,
          .currentBatchSize = 9},
         1},
    };
    for (const Row& row : rows) {
        EXPECT_DOUBLE_EQ(overallProgress(row.run), row.expected) << row.name;
    }
}

TEST(RunProgressTest, BatchInHand) {
    const std::vector<Row> rows = {
        {"no run", {.processed = 1, .currentBatchSize = 5}, 0},
        {"no batch", {.processed = 1, .totalFiles = 10}, 0},
        {"counted",
         {.processed = 6, .failed = 1, .totalFiles = 10, .currentBatchStartIndex = 5, .currentBatchSize = 4},
         0.5},
        {"at most all",
         {.processed = 9, .totalFiles = 10, .currentBatchStartIndex = 0, .currentBatchSize = 4},
         1},
        {"waiting", {.totalFiles = 10, .isWaitingForAPI = true, .currentBatchSize = 4}, 0.8},
        {"waiting for the last",
         {.processed = 9, .totalFiles = 100, .isWaitingForAPI = true, .currentBatchSize = 10},
         0.9},
        {"waiting though all is done",
         {.processed = 4, .totalFiles = 10, .isWaitingForAPI = true, .currentBatchSize = 4},
         0.99},
    };
    for (const Row& row : rows) {
        EXPECT_DOUBLE_EQ(batchProgress(row.run), row.expected) << row.name;
    }
}

TEST(RunProgressTest, RunInBatches) {
    const std::vector<Row> rows = {
        {"not in batches", {.processed = 5, .totalFiles = 10}, 0},
        {"no files", {.totalFiles = 0, .totalBatchCount = 2}, 0},
        {"counted", {.processed = 4, .failed = 1, .totalFiles = 10, .totalBatchCount = 2}, 0.5},
        {"at most all", {.processed = 11, .totalFiles = 10, .totalBatchCount = 2}, 1},
        {"waiting",
         {.processed = 5,
          .totalFiles = 20,
          .isWaitingForAPI = true,
          .currentBatchSize = 5,
          .currentBatchNumber = 2,
          .totalBatchCount = 4},
         0.45},
        {"waiting, before the first batch",
         {.processed = 5,
          .totalFiles = 20,
          .isWaitingForAPI = true,
          .currentBatchSize = 5,
          .totalBatchCount = 4},
         0.25},
        {"waiting for the last",
         {.processed = 19,
          .totalFiles = 20,
          .isWaitingForAPI = true,
          .currentBatchSize = 5,
          .currentBatchNumber = 4,
          .totalBatchCount = 4},
         0.99},
    };
    for (const Row& row : rows) {
        EXPECT_DOUBLE_EQ(batchedRunProgress(row.run), row.expected) << row.name;
    }
}

} // namespace

} // namespace ostrelle
