// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/Await.h"

#include <QCoroTask>
#include <stdexcept>
#include <utility>

namespace ostrelle {

/// The exception that the function throws. Throws std::runtime_error if there is none; others pass through.
template <typename Failure, typename Function>
Failure failureIn(const Function& function) {
    try {
        function();
    } catch (const Failure& error) {
        return error;
    }
    throw std::runtime_error("it has not failed");
}

/// The same for a task.
template <typename Failure, typename Result>
Failure failureOf(QCoro::Task<Result> task) {
    return failureIn<Failure>([&task] { await(std::move(task)); });
}

} // namespace ostrelle
