// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/Analyzer.h"

#include <QCoroTask>
#include <QString>

namespace ostrelle {

/// Writes the empty sidecar of a RAW image and says so on the console; true. Throws FileError.
QCoro::Task<bool> createSidecar(AnalyzerParts parts, QString file);

} // namespace ostrelle
