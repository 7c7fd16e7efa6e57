// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace ostrelle {

/// Takes the program's plain log lines: one line per event, starting with its component in brackets.
class PlainLog {
public:
    virtual ~PlainLog() = default;

    /// Writes one line, given without its line end. Never throws.
    virtual void print(const QString& line) = 0;
};

} // namespace ostrelle
