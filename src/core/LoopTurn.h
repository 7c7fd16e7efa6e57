// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Event.h"

#include <QCoroTask>
#include <QElapsedTimer>

namespace ostrelle {

/// How long a piece of work has held up the event loop. Work of unknown length gives way when that is long.
class LoopTurn {
public:
    LoopTurn() { m_timer.start(); }

    bool isLong() const {
        constexpr qint64 longestTurn = 5; // milliseconds
        return m_timer.elapsed() >= longestTurn;
    }
    /// Resumes when the event loop has done what else there was. The object must live that long.
    QCoro::Task<> giveWay();
    /// The loop has just had its way.
    void restart() { m_timer.start(); }

private:
    QElapsedTimer m_timer;
};

} // namespace ostrelle
