// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Error.h"
#include "core/OffMainThread.h"

#include <QCoroTask>
#include <exception>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

namespace ostrelle {

/// The exception as this type, or nothing when it is null or of another type.
template <typename E>
std::optional<E> failureAs(const std::exception_ptr& failure) {
    if (!failure) {
        return std::nullopt;
    }
    try {
        std::rethrow_exception(failure);
    } catch (const E& error) {
        return error;
    } catch (...) {
        return std::nullopt;
    }
}

/// The description of any exception. `failure` is not null.
inline QString wordsOf(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const std::exception& error) {
        return describe(error);
    } catch (...) {
        return QStringLiteral("Unknown failure.");
    }
}

/// The result of an operation, or the exception it threw: for callers that log a failure or fall back before
/// they await anything else.
template <typename T>
class Attempt {
public:
    static Attempt success(T value) {
        Attempt attempt;
        attempt.m_value.emplace(std::move(value));
        return attempt;
    }
    static Attempt failed(std::exception_ptr error) {
        Attempt attempt;
        attempt.m_error = std::move(error);
        return attempt;
    }

    explicit operator bool() const { return m_value.has_value(); }
    const T& operator*() const { return m_value.value(); }
    const T* operator->() const { return &m_value.value(); }
    T valueOr(T other) const { return m_value.value_or(std::move(other)); }

    [[noreturn]] void rethrow() const { std::rethrow_exception(m_error); }
    /// The description of the failure.
    QString words() const { return wordsOf(m_error); }
    /// Null for a success.
    const std::exception_ptr& failure() const { return m_error; }
    /// The failure as this type, or nothing.
    template <typename E>
    std::optional<E> failureAs() const {
        return ostrelle::failureAs<E>(m_error);
    }

private:
    std::optional<T> m_value;
    std::exception_ptr m_error;
};

/// Calls the function, which returns a value, and catches what it throws.
template <typename Function>
Attempt<std::invoke_result_t<Function>> attemptNow(Function function) {
    using Result = Attempt<std::invoke_result_t<Function>>;
    try {
        return Result::success(function());
    } catch (...) {
        return Result::failed(std::current_exception());
    }
}

/// Awaits the task and catches what it throws. A task without a result yields a std::monostate.
inline QCoro::Task<Attempt<std::monostate>> attempt(QCoro::Task<> task) {
    try {
        co_await std::move(task);
        co_return Attempt<std::monostate>::success({});
    } catch (...) {
        co_return Attempt<std::monostate>::failed(std::current_exception());
    }
}

template <typename T>
QCoro::Task<Attempt<T>> attempt(QCoro::Task<T> task) {
    try {
        co_return Attempt<T>::success(co_await std::move(task));
    } catch (...) {
        co_return Attempt<T>::failed(std::current_exception());
    }
}

/// offMainThread() for a function that may throw.
template <typename Function>
auto attemptOffMainThread(Function function) {
    return attempt(offMainThread(std::move(function)));
}

} // namespace ostrelle
