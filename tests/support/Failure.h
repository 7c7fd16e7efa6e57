// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/Await.h"

#include <QCoroTask>
#include <stdexcept>
#include <utility>

namespace ostrelle {

/// What the function throws, which must be of this kind.
template <typename Failure, typename Function>
Failure failureIn(const Function& function) {
    try {
        function();
    } catch (const Failure& error) {
        return error;
    }
    throw std::runtime_error("it has not failed");
}

/// The failure of a task, which must be of this kind.
template <typename Failure, typename Result>
Failure failureOf(QCoro::Task<Result> task) {
    return failureIn<Failure>([&task] { await(std::move(task)); });
}

} // namespace ostrelle
