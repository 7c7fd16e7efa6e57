// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"

#include <QCoroTask>
#include <chrono>

namespace ostrelle {

/// Awaits the task for at most `patience`. True if it ended in time; otherwise it goes on by itself.
QCoro::Task<bool> endsWithin(QCoro::Task<> task, Clock& clock, std::chrono::milliseconds patience);

} // namespace ostrelle
