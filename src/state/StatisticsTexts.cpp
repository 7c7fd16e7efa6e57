// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/StatisticsTexts.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

StatisticsTexts StatisticsTexts::of(const StatusStore& status, const UsageTracker& usage) {
    return {.lifetimeImages = QString::number(status.lifetimeImagesProcessed()),
            .successRate = QString::number(status.successRate(), 'f', 1) + u'%',
            .successCounts = u"(%1 processed, %2 failed)"_s.arg(status.totalProcessedAllTime())
                                 .arg(status.totalFailedAllTime()),
            .averageTime = QString::number(status.averageProcessingTime(), 'f', 1) + u's',
            .todaysCost = u'$' + QString::number(usage.todaysCost(), 'f', 4),
            .totalCost = u'$' + QString::number(usage.totalCostAllTime(), 'f', 2)};
}

} // namespace ostrelle
