// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "state/StatusStore.h"
#include "state/UsageTracker.h"

#include <QString>

namespace ostrelle {

/// The figures of the statistics as they are shown, the same in every language.
struct StatisticsTexts {
    QString lifetimeImages;
    QString successRate;
    QString successCounts;
    QString averageTime;
    QString todaysCost;
    QString totalCost;

    static StatisticsTexts of(const StatusStore& status, const UsageTracker& usage);
};

} // namespace ostrelle
