// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <QDBusConnection>
#include <chrono>
#include <optional>

namespace ostrelle {

/// Connects to the desktop's bus, or returns nothing if that takes longer than `patience` or there is none.
/// Connecting can block without limit, so it has its own thread, which holds up nobody else.
QCoro::Task<std::optional<QDBusConnection>> sessionBus(std::chrono::milliseconds patience);

/// The same for the machine's bus.
QCoro::Task<std::optional<QDBusConnection>> systemBus(std::chrono::milliseconds patience);

} // namespace ostrelle
