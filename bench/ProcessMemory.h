// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Error.h"

#include <QFile>

namespace ostrelle {

/// What the system tells of this process, in megabytes: its memory now ("VmRSS") or its peak ("VmHWM").
inline double processMegabytes(const QByteArray& field) {
    QFile file(QStringLiteral("/proc/self/status"));
    const bool isOpen = file.open(QIODevice::ReadOnly);
    const QList<QByteArray> lines = isOpen ? file.readAll().split('\n') : QList<QByteArray>();
    for (const QByteArray& line : lines) {
        if (line.startsWith(field + ':')) {
            return line.sliced(field.size() + 1).simplified().split(' ').first().toDouble() / 1024;
        }
    }
    throw Error(QStringLiteral("The system does not tell the memory of the process."));
}

} // namespace ostrelle
