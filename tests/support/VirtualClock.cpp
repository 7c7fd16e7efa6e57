// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/VirtualClock.h"

#include <QCoroFuture>
#include <QPromise>
#include <algorithm>

namespace ostrelle {

class VirtualClock::VirtualTimer : public Timer {
public:
    VirtualTimer(std::shared_ptr<Due> due, Due::iterator place, std::shared_ptr<bool> fired)
        : m_due(std::move(due)), m_place(place), m_fired(std::move(fired)) {}
    ~VirtualTimer() override {
        if (!*m_fired) {
            m_due->erase(m_place);
        }
    }

private:
    std::shared_ptr<Due> m_due;
    Due::iterator m_place;
    std::shared_ptr<bool> m_fired;
};

class VirtualClock::RepeatingTimer : public Timer {
public:
    RepeatingTimer(VirtualClock& clock, std::chrono::milliseconds period, std::function<void()> function)
        : m_clock(clock), m_period(period), m_function(std::move(function)) {
        schedule();
    }

private:
    void schedule() {
        m_next = m_clock.after(m_period, [this] {
            const auto function = m_function; // it may destroy this timer
            schedule();
            function();
        });
    }

    VirtualClock& m_clock;
    std::chrono::milliseconds m_period;
    std::function<void()> m_function;
    std::unique_ptr<Timer> m_next;
};

VirtualClock::VirtualClock(QDateTime start, QTimeZone zone)
    : m_now(std::move(start)), m_zone(std::move(zone)) {}

std::unique_ptr<Timer> VirtualClock::after(std::chrono::milliseconds delay, std::function<void()> function) {
    auto fired = std::make_shared<bool>(false);
    const auto place = m_due->emplace(m_now.addMSecs(delay.count()), [fired, function = std::move(function)] {
        *fired = true;
        function();
    });
    return std::make_unique<VirtualTimer>(m_due, place, fired);
}

std::unique_ptr<Timer> VirtualClock::every(std::chrono::milliseconds period, std::function<void()> function) {
    return std::make_unique<RepeatingTimer>(*this, period, std::move(function));
}

QCoro::Task<> VirtualClock::sleep(std::chrono::milliseconds delay) {
    const auto alarm = std::make_shared<QPromise<void>>();
    alarm->start();
    QFuture<void> rung = alarm->future();
    const std::unique_ptr<Timer> timer = after(delay, [alarm] { alarm->finish(); });
    co_await rung;
}

void VirtualClock::advance(std::chrono::milliseconds span) {
    const QDateTime end = m_now.addMSecs(span.count());
    while (!m_due->empty() && m_due->begin()->first <= end) {
        auto node = m_due->extract(m_due->begin());
        m_now = std::max(m_now, node.key());
        node.mapped()();
    }
    m_now = end;
}

} // namespace ostrelle
