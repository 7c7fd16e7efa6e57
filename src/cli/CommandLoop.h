// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/CommandProgram.h"
#include "cli/ExitStatus.h"

#include <QCoroTask>
#include <functional>

namespace ostrelle {

/// Runs the application's event loop until the command has ended, and returns its ExitStatus. Does not start
/// the command when configuration is missing; prints that on standard error.
int runCommandLoop(CommandProgram& program, std::function<QCoro::Task<int>()> command);

} // namespace ostrelle
