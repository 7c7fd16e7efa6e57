// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ImageOutcome.h"

namespace ostrelle {

bool isDone(OutcomeKind kind) {
    return kind == OutcomeKind::captioned || kind == OutcomeKind::unchanged || kind == OutcomeKind::skipped ||
           kind == OutcomeKind::edited;
}

bool isFailure(OutcomeKind kind) {
    return kind != OutcomeKind::notBegun && !isDone(kind);
}

} // namespace ostrelle
