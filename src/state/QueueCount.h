// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"
#include "state/StatusStore.h"
#include "state/UsageTracker.h"

#include <QDateTime>

namespace ostrelle {

/// Counts auto mode's images, from the scan that finds them to the end of their captioning, and keeps the
/// status up to date. Starts anew when the last one has ended.
class QueueCount {
public:
    /// All must outlive the object.
    QueueCount(StatusStore& status, const UsageTracker& usage, const Clock& clock)
        : m_status(status), m_usage(usage), m_clock(clock) {}

    void add(qint64 images);
    /// One image has its caption, or failed.
    void finishOne();
    /// Images that are left to a later scan, or not wanted any more.
    void withdraw(qint64 images);

private:
    void publish();

    StatusStore& m_status;
    const UsageTracker& m_usage;
    const Clock& m_clock;
    qint64 m_done = 0;
    qint64 m_total = 0;
    QDateTime m_begun;
    double m_costBefore = 0;
};

} // namespace ostrelle
