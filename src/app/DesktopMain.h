// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "product/ServiceEndpoints.h"

#include <functional>

namespace ostrelle {

/// Runs `ostrelle-captions` and returns its exit status. Makes the application object, then calls
/// `endpoints`.
int runDesktopProgram(int argc, char** argv, const std::function<ServiceEndpoints()>& endpoints);

} // namespace ostrelle
