// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/CommandProgram.h"
#include "cli/ExitStatus.h"

#include <QCoroTask>
#include <functional>

namespace ostrelle {

/// Runs the event loop of the application until the command has ended, and returns its ExitStatus. Does not
/// begin when something is missing, which is said on standard error.
int runCommandLoop(CommandProgram& program, std::function<QCoro::Task<int>()> command);

} // namespace ostrelle
