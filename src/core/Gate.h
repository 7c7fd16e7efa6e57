// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Event.h"

#include <QCoroTask>
#include <deque>
#include <memory>
#include <utility>

namespace ostrelle {

/// Lets a limited number of coroutines through at a time, first come, first served. For the thread of the
/// event loop only. Passes and waiting coroutines may outlive the gate.
class Gate {
    struct State;

public:
    /// The right to be through the gate, held until it is destroyed.
    class Pass {
    public:
        explicit Pass(std::shared_ptr<State> state) : m_state(std::move(state)) {}
        ~Pass();
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;

    private:
        std::shared_ptr<State> m_state;
    };

    explicit Gate(int width);

    /// Resumes when a place is free, or with null when the gate is closed.
    QCoro::Task<std::unique_ptr<Pass>> enter() const { return enter(m_state); }
    /// Ends the wait of all waiting coroutines and of any to come, with null.
    void close();

private:
    static QCoro::Task<std::unique_ptr<Pass>> enter(std::shared_ptr<State> state);

    std::shared_ptr<State> m_state;
};

} // namespace ostrelle
