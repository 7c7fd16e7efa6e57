// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/PlainLog.h"

#include <QString>
#include <QStringList>
#include <functional>

namespace ostrelle {

/// Log lines kept for a test to look at, which can also step in when a line is logged.
class RecordingLog : public PlainLog {
public:
    void print(const QString& line) override {
        lines.append(line);
        if (onLine) {
            onLine(line);
        }
    }
    bool has(const QString& line) const { return lines.contains(line); }
    qsizetype count(const QString& words) const { return lines.filter(words).size(); }

    QStringList lines;
    std::function<void(const QString&)> onLine;
};

} // namespace ostrelle
