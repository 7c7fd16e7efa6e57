// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerParts.h"

#include <QCoroTask>
#include <QString>

namespace ostrelle {

/// Writes the empty sidecar of a RAW image, and says so on the console, if it still has none by then. Throws
/// FileError.
QCoro::Task<> createSidecar(AnalyzerParts parts, QString file);

} // namespace ostrelle
