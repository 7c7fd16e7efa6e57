// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <functional>

namespace ostrelle {

/// Runs the event loop until the condition holds. Throws std::runtime_error after 60 seconds of real time, so
/// that a test fails rather than hangs.
void waitUntil(const std::function<bool()>& condition);

/// Runs the event loop until the task has finished; returns its value or throws what it threw.
template <typename T>
T await(QCoro::Task<T> task) {
    waitUntil([&task] { return task.isReady(); });
    return task.operator co_await().await_resume();
}

} // namespace ostrelle
