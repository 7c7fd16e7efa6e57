// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/PlainLog.h"

#include <cstdio>

namespace ostrelle {

/// Log lines on standard output or another open stream, in UTF-8, flushed line by line.
class ConsoleLog : public PlainLog {
public:
    explicit ConsoleLog(std::FILE* stream = stdout) : m_stream(stream) {}

    void print(const QString& line) override;

private:
    std::FILE* m_stream;
};

/// Log lines that nobody asked for.
class SilentLog : public PlainLog {
public:
    void print(const QString&) override {}
};

} // namespace ostrelle
