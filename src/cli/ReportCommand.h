// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/Options.h"
#include "product/AppFolders.h"
#include "product/ServiceEndpoints.h"

namespace ostrelle {

/// Writes a contact sheet of the files, a folder, a day or the last run, with the captions that the files
/// hold now. Runs the application's event loop. Returns an ExitStatus.
int runReportCommand(const Options& options, const AppFolders& folders, const ServiceEndpoints& endpoints);

} // namespace ostrelle
