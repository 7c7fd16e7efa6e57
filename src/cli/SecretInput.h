// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <cstdio>

namespace ostrelle {

/// Reads one line of at most 4,095 bytes of UTF-8, without its line end; a terminal does not show it. Empty
/// if there is none, or it has control characters.
QString readSecret(std::FILE* input);

} // namespace ostrelle
