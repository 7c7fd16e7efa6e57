// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"

#include <QCoroTask>
#include <chrono>

namespace ostrelle {

/// Awaits the task, but not longer than the patience; whether it has ended by then. One that has not goes on
/// by itself.
QCoro::Task<bool> endsWithin(QCoro::Task<> task, Clock& clock, std::chrono::milliseconds patience);

} // namespace ostrelle
