// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "services/ChatResponse.h"

#include <QStringList>

namespace ostrelle {

/// What a batch of so many images, at least one, cost in tokens, beside an estimate of what its images would
/// have cost with a request each: lines for the console.
QStringList tokenComparison(const Usage& usage, qsizetype imageCount);

} // namespace ostrelle
