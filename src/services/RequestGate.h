// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <QPromise>
#include <deque>
#include <memory>

namespace ostrelle {

/// Lets a fixed number of requests through at once and the rest in the order in which they came, so that a
/// request's time does not run while it waits for a connection.
class RequestGate {
public:
    /// A place behind the gate, held for the length of a scope.
    class Pass {
    public:
        explicit Pass(std::shared_ptr<RequestGate> gate) : m_gate(std::move(gate)) {}
        ~Pass() { m_gate->leave(); }
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;

    private:
        std::shared_ptr<RequestGate> m_gate;
    };

    explicit RequestGate(int width) : m_free(width) {}

    /// Resumes when a place is free, which the caller then owes to a Pass; false when the gate has been
    /// closed, and no place is taken. The gate lives as long as somebody waits at it.
    static QCoro::Task<bool> enter(std::shared_ptr<RequestGate> gate);

    /// Sends everybody away who waits or comes.
    void close();

private:
    void leave();

    int m_free;
    bool m_isClosed = false;
    std::deque<std::shared_ptr<QPromise<bool>>> m_waiting;
};

} // namespace ostrelle
