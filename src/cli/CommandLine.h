// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "product/ServiceEndpoints.h"

#include <QStringList>

namespace ostrelle {

/// Runs `ostrelle-caption` with the arguments after the program's name and returns its exit status. Needs the
/// application object and runs its event loop.
int runCommandLine(const QStringList& arguments, const ServiceEndpoints& endpoints);

} // namespace ostrelle
