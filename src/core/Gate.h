// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Event.h"

#include <QCoroTask>
#include <deque>
#include <memory>
#include <utility>

namespace ostrelle {

/// Lets a limited number through at once and the rest in the order in which they came. For the thread of the
/// event loop only. Passes and those who wait may outlive the gate.
class Gate {
    struct State;

public:
    /// A place behind the gate, held until it is destroyed.
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

    /// Resumes when a place is free; with null when the gate has been closed.
    QCoro::Task<std::unique_ptr<Pass>> enter() const { return enter(m_state); }
    /// Turns everybody away, those waiting and those to come.
    void close();

private:
    static QCoro::Task<std::unique_ptr<Pass>> enter(std::shared_ptr<State> state);

    std::shared_ptr<State> m_state;
};

} // namespace ostrelle
