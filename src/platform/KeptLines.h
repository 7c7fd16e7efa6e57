// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/PlainLog.h"

#include <QStringList>

namespace ostrelle {

/// Keeps a worker thread's log lines, to be logged later on the log's own thread.
class KeptLines : public PlainLog {
public:
    void print(const QString& line) override { m_lines.append(line); }

    const QStringList& lines() const { return m_lines; }
    void tell(PlainLog& log) const { log.printAll(m_lines); }

private:
    QStringList m_lines;
};

} // namespace ostrelle
