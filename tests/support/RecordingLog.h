// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/PlainLog.h"

#include <QString>
#include <QStringList>

namespace ostrelle {

/// Keeps the log lines for a test to check.
class RecordingLog : public PlainLog {
public:
    void print(const QString& line) override { lines.append(line); }

    QStringList lines;
};

} // namespace ostrelle
