// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"

#include <map>
#include <memory>
#include <utility>

namespace ostrelle {

/// A clock that stands still until a test moves it.
class VirtualClock : public Clock {
public:
    explicit VirtualClock(QDateTime start = QDateTime(QDate(2024, 10, 26), QTime(12, 0), QTimeZone::utc()),
                          QTimeZone zone = QTimeZone::utc());

    QDateTime now() const override { return m_now; }
    QTimeZone timeZone() const override { return m_zone; }
    QCoro::Task<> sleep(std::chrono::milliseconds delay) override;
    std::unique_ptr<Timer> after(std::chrono::milliseconds delay, std::function<void()> function) override;
    std::unique_ptr<Timer> every(std::chrono::milliseconds period, std::function<void()> function) override;

    /// Moves the time on and fires everything that falls due, in order.
    void advance(std::chrono::milliseconds span);
    /// How many sleeps and timers are waiting.
    qsizetype waiting() const { return static_cast<qsizetype>(m_due->size()); }
    /// The time until the next of them falls due. Something must be waiting.
    std::chrono::milliseconds untilNext() const {
        return std::chrono::milliseconds(m_now.msecsTo(m_due->begin()->first));
    }
    /// Sets the time, as if the machine had slept or its clock had been set. Nothing fires before the next
    /// advance().
    void setNow(QDateTime moment) { m_now = std::move(moment); }

private:
    using Due = std::multimap<QDateTime, std::function<void()>>;
    class VirtualTimer;
    class RepeatingTimer;

    QDateTime m_now;
    QTimeZone m_zone;
    std::shared_ptr<Due> m_due = std::make_shared<Due>();
};

} // namespace ostrelle
