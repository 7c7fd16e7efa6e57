// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "product/StartRequest.h"

#include <optional>

namespace ostrelle {

/// Prints what `--help` or `--version` asks for and returns the exit status; nothing when the program is to
/// start. Needs no display.
std::optional<int> answerArguments(int argc, const char* const* argv);

/// What the arguments that the windowing system has left ask for. Relative paths are of the current folder.
/// Throws Error about an argument that is neither a file nor an option; a name that is not UTF-8 cannot be
/// opened.
StartRequest startRequest(int argc, const char* const* argv);

} // namespace ostrelle
