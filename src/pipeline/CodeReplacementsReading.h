// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerLog.h"
#include "pipeline/CodeReplacements.h"
#include "platform/FileAccess.h"
#include "platform/FolderThreads.h"
#include "state/SettingsStore.h"

#include <QCoroTask>
#include <QStringList>

namespace ostrelle {

/// Whether it is logged that a roster could not be read.
enum class RosterFailure { logged, ignored };

/// The roster of a run.
struct RosterReading {
    CodeReplacements replacements;
    QStringList warnings; ///< why its names are not used, if so: a sentence for the user
};

/// Finds the roster that the settings lead to, reads it on the thread of its folder and logs which one it is.
/// Never throws: without a roster, or with one that cannot be read, the run goes on with none. All references
/// have to outlive the task.
QCoro::Task<RosterReading> readRoster(const SettingsStore& settings, FolderThreads& threads,
                                      FileAccess& access, AnalyzerLog& log,
                                      RosterFailure failure = RosterFailure::logged);

} // namespace ostrelle
