// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <QPromise>
#include <deque>
#include <memory>
#include <utility>

namespace ostrelle {

/// Admits a fixed number of requests at once and queues the rest in order, so that a request's time does not
/// run while it waits for a connection.
class RequestGate {
public:
    /// A slot, held for the length of a scope.
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

    /// Resumes when a slot is free; the caller must then give it to a Pass. False, without a slot, when the
    /// gate has been closed. The gate lives as long as anyone waits at it.
    static QCoro::Task<bool> enter(std::shared_ptr<RequestGate> gate);

    /// Turns away all requests, those waiting and those to come.
    void close();

private:
    void leave();

    int m_free;
    bool m_isClosed = false;
    std::deque<std::shared_ptr<QPromise<bool>>> m_waiting;
};

} // namespace ostrelle
