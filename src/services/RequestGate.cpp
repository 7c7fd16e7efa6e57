// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/RequestGate.h"

#include <QCoroFuture>
#include <utility>

namespace ostrelle {

namespace {

void answer(QPromise<bool>& turn, bool mayPass) {
    turn.addResult(mayPass);
    turn.finish();
}

} // namespace

QCoro::Task<bool> RequestGate::enter(std::shared_ptr<RequestGate> gate) {
    if (gate->m_isClosed) {
        co_return false;
    }
    if (gate->m_free > 0) {
        --gate->m_free;
        co_return true;
    }
    const auto turn = std::make_shared<QPromise<bool>>();
    turn->start();
    gate->m_waiting.push_back(turn);
    QFuture<bool> itsTurn = turn->future();
    const bool mayPass = co_await itsTurn;
    co_return mayPass && !gate->m_isClosed; // it may have been closed in the meantime
}

void RequestGate::leave() {
    if (m_waiting.empty()) {
        ++m_free;
        return;
    }
    const auto next = m_waiting.front();
    m_waiting.pop_front();
    answer(*next, true);
}

void RequestGate::close() {
    m_isClosed = true;
    for (const auto& turn : std::exchange(m_waiting, {})) {
        answer(*turn, false);
    }
}

} // namespace ostrelle
