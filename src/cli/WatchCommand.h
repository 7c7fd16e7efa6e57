// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/Options.h"
#include "product/AppFolders.h"
#include "product/ServiceEndpoints.h"

namespace ostrelle {

/// Runs auto mode on a folder or a server until SIGINT, SIGTERM or SIGHUP, and prints a line for each
/// finished image. The signal stops new images and lets those under way finish; a second one ends the program
/// at once, which loses nothing either. Or downloads and captions all that is on the server, and ends. Runs
/// the application's event loop. Returns an ExitStatus.
int runWatchCommand(const Options& options, const AppFolders& folders, const ServiceEndpoints& endpoints);

} // namespace ostrelle
