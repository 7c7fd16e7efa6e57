// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/RunTally.h"

#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

qsizetype RunTally::count(OutcomeKind kind) const {
    return std::count_if(images.begin(), images.end(),
                         [kind](const ImageOutcome& image) { return image.kind == kind; });
}

qsizetype RunTally::failed() const {
    return std::count_if(images.begin(), images.end(),
                         [](const ImageOutcome& image) { return isFailure(image.kind); });
}

QString interruptionMessage(const RunTally& tally) {
    return u"Interrupted. Captioned: %1, failed: %2, not begun: %3."_s.arg(tally.captioned())
        .arg(tally.failed())
        .arg(tally.notBegun());
}

} // namespace ostrelle
