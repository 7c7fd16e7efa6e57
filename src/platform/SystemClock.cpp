// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/SystemClock.h"

#include <QCoroTimer>
#include <QTimer>

namespace ostrelle {

namespace {

class QtTimer : public Timer {
public:
    QtTimer(std::chrono::milliseconds delay, std::function<void()> function) {
        m_timer.setSingleShot(true);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, std::move(function));
        m_timer.start(delay);
    }

private:
    QTimer m_timer;
};

} // namespace

QDateTime SystemClock::now() const {
    return QDateTime::currentDateTimeUtc();
}

QTimeZone SystemClock::timeZone() const {
    return QTimeZone::systemTimeZone();
}

QCoro::Task<> SystemClock::sleep(std::chrono::milliseconds delay) {
    QTimer timer;
    timer.setSingleShot(true);
    timer.start(delay);
    co_await timer;
}

std::unique_ptr<Timer> SystemClock::after(std::chrono::milliseconds delay, std::function<void()> function) {
    return std::make_unique<QtTimer>(delay, std::move(function));
}

} // namespace ostrelle
