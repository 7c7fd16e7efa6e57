// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <QDateTime>
#include <QTimeZone>
#include <chrono>
#include <functional>
#include <memory>

namespace ostrelle {

/// A running timer; destroying it stops it.
class Timer {
public:
    virtual ~Timer() = default;
};

/// The program's only source of time: every delay, deadline and date goes through it.
class Clock {
public:
    virtual ~Clock() = default;

    /// The current moment, in UTC.
    virtual QDateTime now() const = 0;
    /// The user's time zone: where a day begins and ends.
    virtual QTimeZone timeZone() const = 0;
    /// Resumes the caller after the delay.
    virtual QCoro::Task<> sleep(std::chrono::milliseconds delay) = 0;
    /// Calls the function once after the delay, unless the timer is destroyed first.
    virtual std::unique_ptr<Timer> after(std::chrono::milliseconds delay, std::function<void()> function) = 0;
    /// Calls the function after each period until the timer is destroyed, which the function may do. Calls
    /// missed while the machine slept are not made up.
    virtual std::unique_ptr<Timer> every(std::chrono::milliseconds period,
                                         std::function<void()> function) = 0;
};

} // namespace ostrelle
