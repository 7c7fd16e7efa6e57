// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <QDBusConnection>
#include <chrono>
#include <optional>

namespace ostrelle {

/// The desktop's bus, which need not be connected. Connecting waits for an answer without any limit, so it
/// has a thread of its own, which holds up nobody else. Nothing when there is none within the patience.
QCoro::Task<std::optional<QDBusConnection>> sessionBus(std::chrono::milliseconds patience);

} // namespace ostrelle
