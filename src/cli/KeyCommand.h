// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/PlainLog.h"

#include <QString>
#include <cstdio>

namespace ostrelle {

/// Reads the API key from the first line of the stream and stores it in the defaults file. On a terminal it
/// asks for the key and does not show it. The result is an ExitStatus.
int storeKey(const QString& defaultsPath, std::FILE* input, PlainLog& output, PlainLog& errors);

/// Forgets the stored key. The result is an ExitStatus.
int clearKey(const QString& defaultsPath, PlainLog& output, PlainLog& errors);

} // namespace ostrelle
