// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroFuture>
#include <QCoroTask>
#include <QThreadPool>
#include <QtConcurrentRun>
#include <exception>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

namespace ostrelle {

/// Runs a pure function on one of the pool's threads and resumes the caller on its own thread with the
/// result, or throws what the function threw. Waits for a thread when all are busy. The function must own
/// everything it uses; the pool must outlive the call.
template <typename Function>
QCoro::Task<std::invoke_result_t<Function>> onThreadPool(QThreadPool* pool, Function function) {
    using Value = std::invoke_result_t<Function>;
    struct Outcome {
        std::optional<std::conditional_t<std::is_void_v<Value>, std::monostate, Value>> value;
        std::exception_ptr error;
    };
    // A QFuture wraps foreign exceptions and cannot hold move-only types, so the outcome travels beside it.
    auto outcome = std::make_shared<Outcome>();
    auto work = [outcome, function = std::move(function)]() mutable {
        try {
            if constexpr (std::is_void_v<Value>) {
                function();
            } else {
                outcome->value.emplace(function());
            }
        } catch (...) {
            outcome->error = std::current_exception();
        }
    };
    QFuture<void> finished = QtConcurrent::run(pool, std::move(work));
    co_await finished;
    if (outcome->error) {
        std::rethrow_exception(outcome->error);
    }
    if constexpr (!std::is_void_v<Value>) {
        co_return std::move(outcome->value).value();
    }
}

} // namespace ostrelle
