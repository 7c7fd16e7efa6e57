// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/PlainLog.h"

#include <cstdio>

namespace ostrelle {

/// Log lines on standard output or another open stream, in UTF-8, flushed after each line.
class ConsoleLog : public PlainLog {
public:
    explicit ConsoleLog(std::FILE* stream = stdout) : m_stream(stream) {}

    void print(const QString& line) override;
    /// Flushed once.
    void printAll(const QStringList& lines) override;

private:
    std::FILE* m_stream;
};

/// A log that discards its lines.
class SilentLog : public PlainLog {
public:
    void print(const QString&) override {}
};

} // namespace ostrelle
