// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "services/ChatResponse.h"

#include <QStringList>

namespace ostrelle {

/// Console lines that compare the tokens of a batch with an estimate for one request per image. `imageCount`
/// is at least 1.
QStringList tokenComparison(const Usage& usage, qsizetype imageCount);

} // namespace ostrelle
