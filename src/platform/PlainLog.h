// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

namespace ostrelle {

/// Takes the program's plain log lines: one line per event, starting with its component in brackets.
class PlainLog {
public:
    virtual ~PlainLog() = default;

    /// Writes one line, given without its line end. Never throws.
    virtual void print(const QString& line) = 0;
    /// The same for many lines, which may cost less than one by one.
    virtual void printAll(const QStringList& lines) {
        for (const QString& line : lines) {
            print(line);
        }
    }
};

} // namespace ostrelle
