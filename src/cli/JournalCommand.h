// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/Options.h"
#include "product/AppFolders.h"
#include "product/ServiceEndpoints.h"

namespace ostrelle {

/// Takes back the captions of the files or of the last run, or forgets old entries of the journal, and prints
/// each result. Runs the application's event loop. Returns an ExitStatus: fileFailed when a caption was left.
int runJournalCommand(const Options& options, const AppFolders& folders, const ServiceEndpoints& endpoints);

} // namespace ostrelle
