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

/// Whether a roster that cannot be read is logged.
enum class RosterFailure { logged, ignored };

/// The roster of a run.
struct RosterReading {
    CodeReplacements replacements;
    QStringList warnings; ///< why its names are not used, a sentence each; empty if they are
};

/// Finds the roster by the settings, reads it on the thread of its folder and logs which one it is. Never
/// throws: if there is none, or it cannot be read, the run goes on without. All references must outlive the
/// task.
QCoro::Task<RosterReading> readRoster(const SettingsStore& settings, FolderThreads& threads,
                                      FileAccess& access, AnalyzerLog& log,
                                      RosterFailure failure = RosterFailure::logged);

} // namespace ostrelle
