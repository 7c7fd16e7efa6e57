// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"

#include <QCoroTask>
#include <chrono>
#include <functional>
#include <memory>

namespace ostrelle {

/// The machine's clock and time zone.
class SystemClock : public Clock {
public:
    QDateTime now() const override;
    QTimeZone timeZone() const override;
    QCoro::Task<> sleep(std::chrono::milliseconds delay) override;
    std::unique_ptr<Timer> after(std::chrono::milliseconds delay, std::function<void()> function) override;
    std::unique_ptr<Timer> every(std::chrono::milliseconds period, std::function<void()> function) override;
};

} // namespace ostrelle
