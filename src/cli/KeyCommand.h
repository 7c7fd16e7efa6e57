// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/PlainLog.h"

#include <QString>
#include <cstdio>

namespace ostrelle {

/// Reads the API key from the first line of the stream and stores it in the defaults file. On a terminal,
/// asks for the key and does not echo it. Returns an ExitStatus.
int storeKey(const QString& defaultsPath, std::FILE* input, PlainLog& output, PlainLog& errors);

/// Removes the stored key. Returns an ExitStatus.
int clearKey(const QString& defaultsPath, PlainLog& output, PlainLog& errors);

} // namespace ostrelle
