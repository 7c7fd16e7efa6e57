// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerParts.h"
#include "pipeline/CodeReplacements.h"

#include <QCoroTask>
#include <QStringList>

namespace ostrelle {

/// Whether it is said in the log that a roster could not be read.
enum class RosterFailure { logged, ignored };

/// The roster of a run.
struct RosterReading {
    CodeReplacements replacements;
    QStringList warnings; ///< why its names are not used, if so: a sentence for the user
};

/// Finds the roster that the settings lead to, reads it on a worker thread and says in the log which one it
/// is. Never throws: without a roster, or with one that cannot be read, the run goes on with none.
QCoro::Task<RosterReading> readRoster(AnalyzerParts parts, RosterFailure failure = RosterFailure::logged);

} // namespace ostrelle
