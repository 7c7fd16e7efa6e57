// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/TokenComparison.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

QStringList tokenComparison(const Usage& usage, qsizetype imageCount) {
    // A single image carries all the rules that a batch shares: two thirds more per image, as measured.
    constexpr double shareOfRules = 1.67;
    constexpr int ruleWidth = 60;
    const qint64 batchShare = usage.promptTokens / imageCount; // of whole tokens
    const auto perImage = static_cast<qint64>(static_cast<double>(batchShare) * shareOfRules);
    const qint64 oldPrompt = perImage * imageCount;
    const qint64 oldTotal = oldPrompt + usage.completionTokens;
    const qint64 saved = oldTotal - usage.totalTokens;
    const double percent =
        oldTotal == 0 ? 0 : static_cast<double>(saved) / static_cast<double>(oldTotal) * 100;
    const QString heavyRule(ruleWidth, u'═');
    const QString thinRule(ruleWidth, u'─');
    QStringList lines = {
        heavyRule,
        u"TOKEN USAGE COMPARISON - Batch Processing"_s,
        heavyRule,
        u"Batch Size: %1 images"_s.arg(imageCount),
        thinRule,
        u"NEW BATCH APPROACH:"_s,
        u"  Prompt tokens:  %1 (shared across %2 images)"_s.arg(usage.promptTokens).arg(imageCount),
        u"  Completion tokens: %1"_s.arg(usage.completionTokens),
        u"  Total tokens:    %1"_s.arg(usage.totalTokens),
        thinRule,
        u"ESTIMATED OLD APPROACH (individual API calls):"_s,
        u"  Prompt tokens:  ~%1 (~%2 per image × %3)"_s.arg(oldPrompt).arg(perImage).arg(imageCount),
        u"  Completion tokens: ~%1"_s.arg(usage.completionTokens),
        u"  Total tokens:    ~%1"_s.arg(oldTotal),
        thinRule,
        u"💰 SAVINGS:"_s,
        u"  Token savings:   %1 tokens"_s.arg(saved),
        u"  Savings:        %1%"_s.arg(percent, 0, 'f', 1),
        heavyRule,
    };
    for (QString& line : lines) {
        line.prepend(u"[Analyzer] "_s);
    }
    return lines;
}

} // namespace ostrelle
