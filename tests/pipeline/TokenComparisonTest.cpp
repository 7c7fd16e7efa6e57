// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/TokenComparison.h"

#include <gtest/gtest.h>

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(TokenComparison, ABatchIsHeldAgainstARequestForEachImage) {
    const QString heavyRule = u"[Analyzer] "_s + QString(60, u'═');
    const QString thinRule = u"[Analyzer] "_s + QString(60, u'─');
    const QStringList expected = {
        heavyRule,
        u"[Analyzer] TOKEN USAGE COMPARISON - Batch Processing"_s,
        heavyRule,
        u"[Analyzer] Batch Size: 3 images"_s,
        thinRule,
        u"[Analyzer] NEW BATCH APPROACH:"_s,
        u"[Analyzer]   Prompt tokens:  10000 (shared across 3 images)"_s,
        u"[Analyzer]   Completion tokens: 150"_s,
        u"[Analyzer]   Total tokens:    10150"_s,
        thinRule,
        u"[Analyzer] ESTIMATED OLD APPROACH (individual API calls):"_s,
        u"[Analyzer]   Prompt tokens:  ~16698 (~5566 per image × 3)"_s, // 3333 × 1.67 = 5566.11
        u"[Analyzer]   Completion tokens: ~150"_s,
        u"[Analyzer]   Total tokens:    ~16848"_s,
        thinRule,
        u"[Analyzer] 💰 SAVINGS:"_s,
        u"[Analyzer]   Token savings:   6698 tokens"_s,
        u"[Analyzer]   Savings:        39.8%"_s,
        heavyRule,
    };
    EXPECT_EQ(tokenComparison({.promptTokens = 10'000, .completionTokens = 150, .totalTokens = 10'150}, 3),
              expected);
}

TEST(TokenComparison, WhatTheServiceCountsNeedNotAddUp) {
    const struct {
        Usage usage;
        QString saved;
        QString percent;
    } rows[] = {
        {{0, 0, 0}, u"0"_s, u"0.0"_s},
        {{0, 0, 5}, u"-5"_s, u"0.0"_s},
        {{1, 100, 101}, u"-1"_s, u"-1.0"_s},
        {{1'000'000'000, 0, 1'000'000'000}, u"670000000"_s, u"40.1"_s},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.usage.totalTokens);
        const QStringList lines = tokenComparison(row.usage, 2);
        EXPECT_TRUE(lines.contains(u"[Analyzer]   Token savings:   %1 tokens"_s.arg(row.saved)));
        EXPECT_TRUE(lines.contains(u"[Analyzer]   Savings:        "_s + row.percent + u'%'));
    }
}

} // namespace ostrelle
