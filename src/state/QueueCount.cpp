// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/QueueCount.h"

#include <algorithm>

namespace ostrelle {

void QueueCount::add(qint64 images) {
    if (m_total == 0) {
        m_begun = m_clock.now();
        m_costBefore = m_usage.totalCostAllTime();
    }
    m_total += images;
    publish();
}

void QueueCount::finishOne() {
    ++m_done;
    publish();
}

void QueueCount::withdraw(qint64 images) {
    m_total -= images;
    publish();
}

void QueueCount::publish() {
    if (m_done >= m_total) {
        m_done = 0;
        m_total = 0;
    }
    QueueProgress queue{.done = m_done, .total = m_total};
    if (m_done > 0) {
        constexpr double millisecondsPerSecond = 1000;
        const auto elapsed = static_cast<double>(std::max<qint64>(m_begun.msecsTo(m_clock.now()), 0));
        queue.secondsPerImage = elapsed / millisecondsPerSecond / static_cast<double>(m_done);
        queue.dollars = m_usage.totalCostAllTime() - m_costBefore;
    }
    m_status.setQueue(queue);
}

} // namespace ostrelle
