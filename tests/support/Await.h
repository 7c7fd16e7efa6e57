// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <exception>
#include <functional>
#include <optional>
#include <type_traits>

namespace ostrelle {

/// Runs the event loop until the condition holds. Throws std::runtime_error when it does not within
/// 60 seconds of real time, so that a test that hangs fails instead.
void waitUntil(const std::function<bool()>& condition);

namespace detail {

struct Finished {
    bool done = false;
    std::exception_ptr error;
};

template <typename T>
QCoro::Task<> collect(QCoro::Task<T> task, std::optional<T>* value, Finished* finished) {
    try {
        value->emplace(co_await std::move(task));
    } catch (...) {
        finished->error = std::current_exception();
    }
    finished->done = true;
}

inline QCoro::Task<> collect(QCoro::Task<> task, Finished* finished) {
    try {
        co_await std::move(task);
    } catch (...) {
        finished->error = std::current_exception();
    }
    finished->done = true;
}

} // namespace detail

/// Runs the event loop until the task has finished; returns its value or throws what it threw.
template <typename T>
T await(QCoro::Task<T> task) {
    detail::Finished finished;
    if constexpr (std::is_void_v<T>) {
        const auto collected = detail::collect(std::move(task), &finished);
        waitUntil([&finished] { return finished.done; });
        if (finished.error) {
            std::rethrow_exception(finished.error);
        }
    } else {
        std::optional<T> value;
        const auto collected = detail::collect(std::move(task), &value, &finished);
        waitUntil([&finished] { return finished.done; });
        if (finished.error) {
            std::rethrow_exception(finished.error);
        }
        return std::move(value).value();
    }
}

} // namespace ostrelle
