// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/Options.h"
#include "product/AppFolders.h"
#include "product/ServiceEndpoints.h"

namespace ostrelle {

/// Checks the captions that the files hold now, without a model, and prints what it finds for each. Changes
/// nothing. Runs the application's event loop. Returns an ExitStatus: fileFailed when there is a finding.
int runCheckCommand(const Options& options, const AppFolders& folders, const ServiceEndpoints& endpoints);

} // namespace ostrelle
