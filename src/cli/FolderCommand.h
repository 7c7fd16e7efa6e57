// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/Options.h"
#include "product/AppFolders.h"
#include "product/ServiceEndpoints.h"

namespace ostrelle {

/// Captions the images of a folder, ten per request, and prints each result. Runs the application's event
/// loop. Returns an ExitStatus.
int runFolderCommand(const Options& options, const AppFolders& folders, const ServiceEndpoints& endpoints);

} // namespace ostrelle
