// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ServiceEndpoints.h"

#include <functional>

namespace ostrelle {

/// Runs `ostrelle-captions`, to its exit status. Makes the application object, then asks for the addresses.
int runDesktopProgram(int argc, char** argv, const std::function<ServiceEndpoints()>& endpoints);

} // namespace ostrelle
