// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/SystemClock.h"

#include <QCoroTimer>
#include <QTimer>
#include <utility>

namespace ostrelle {

namespace {

class QtTimer : public Timer {
public:
    enum class Repetition { once, forever };

    QtTimer(std::chrono::milliseconds delay, Repetition repetition, std::function<void()> function) {
        m_timer.setSingleShot(repetition == Repetition::once);
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
    return std::make_unique<QtTimer>(delay, QtTimer::Repetition::once, std::move(function));
}

std::unique_ptr<Timer> SystemClock::every(std::chrono::milliseconds period, std::function<void()> function) {
    return std::make_unique<QtTimer>(period, QtTimer::Repetition::forever, std::move(function));
}

} // namespace ostrelle
