// SPDX-License-Identifier: GPL-3.0-or-later
#include "checks/Finding.h"

namespace ostrelle {

Severity severityOf(FindingKind kind) {
    switch (kind) {
    case FindingKind::numberMismatch:
    case FindingKind::wrongFact:
    case FindingKind::placeholder:
    case FindingKind::empty:
    case FindingKind::cutOff:
        return Severity::error;
    case FindingKind::sameAsAnother:
    case FindingKind::unusualCharacters:
        return Severity::note;
    case FindingKind::unknownName:
    case FindingKind::missingDate:
    case FindingKind::missingPlace:
    case FindingKind::severalLines:
    case FindingKind::doubledCredit:
    case FindingKind::missingCredit:
        break;
    }
    return Severity::warning;
}

} // namespace ostrelle
