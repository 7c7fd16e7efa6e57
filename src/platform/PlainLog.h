// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace ostrelle {

/// Where the program's plain log lines go: one line an event, with its component in brackets in front.
class PlainLog {
public:
    virtual ~PlainLog() = default;

    /// Writes one line, without its line end. Never fails towards its caller.
    virtual void print(const QString& line) = 0;
};

} // namespace ostrelle
