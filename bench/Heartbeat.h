// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <algorithm>

#include "ProcessorTime.h"

namespace ostrelle {

/// How late a timer of the main thread is: that is how long a window would freeze.
class Heartbeat {
public:
    static constexpr int period = 5;      ///< milliseconds
    static constexpr double grace = 16;   ///< milliseconds: one frame of a screen
    static constexpr double share = 1e-3; ///< of the ticks may be later than that

    Heartbeat() {
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { tick(); });
        m_since.start();
        m_timer.start(period);
    }

    int ticks() const { return m_ticks; }
    int late() const { return m_late; }
    double worst() const { return m_worst; }
    /// The longest time in milliseconds that the main thread itself has computed between two ticks. The rest
    /// of a delay comes from the disk, or from other threads that the system preferred.
    double longestTurn() const { return m_longestTurn; }

private:
    void tick() {
        const double lateness = static_cast<double>(m_since.nsecsElapsed()) / 1e6 - period;
        const double computed = processorSeconds(CLOCK_THREAD_CPUTIME_ID);
        m_since.start();
        ++m_ticks;
        m_late += lateness > grace ? 1 : 0;
        m_worst = std::max(m_worst, lateness);
        m_longestTurn = std::max(m_longestTurn, (computed - m_computed) * 1e3);
        m_computed = computed;
    }

    QTimer m_timer;
    QElapsedTimer m_since;
    double m_computed = processorSeconds(CLOCK_THREAD_CPUTIME_ID);
    int m_ticks = 0;
    int m_late = 0;
    double m_worst = 0;
    double m_longestTurn = 0;
};

} // namespace ostrelle
