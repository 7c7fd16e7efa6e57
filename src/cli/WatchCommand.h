// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/Options.h"

#include "product/AppFolders.h"
#include "product/ServiceEndpoints.h"

namespace ostrelle {

/// Runs auto mode on a folder until SIGINT, SIGTERM or SIGHUP, with one line for each image that is done
/// with. Then no new image begins, and those in the works are finished; a second signal ends at once, which
/// loses nothing either. Runs the event loop of the application. The result is an ExitStatus.
int runWatchCommand(const Options& options, const AppFolders& folders, const ServiceEndpoints& endpoints);

} // namespace ostrelle
