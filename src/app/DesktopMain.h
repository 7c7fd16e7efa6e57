// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include "product/ServiceEndpoints.h"

namespace ostrelle {

/// Runs `ostrelle-captions`, to its exit status. Makes the application object, then asks for the addresses.
int runDesktopProgram(int argc, char** argv, const std::function<ServiceEndpoints()>& endpoints);

} // namespace ostrelle
