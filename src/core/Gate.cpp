// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Gate.h"

#include <utility>

namespace ostrelle {

struct Gate::State {
    int free;
    bool isClosed = false;
    std::deque<Event> waiting = {};
};

Gate::Gate(int width) : m_state(std::make_shared<State>(State{.free = width})) {}

Gate::Pass::~Pass() {
    if (m_state->waiting.empty()) {
        ++m_state->free;
        return;
    }
    const Event next = m_state->waiting.front(); // who takes over the place
    m_state->waiting.pop_front();
    next.happen();
}

QCoro::Task<std::unique_ptr<Gate::Pass>> Gate::enter(std::shared_ptr<State> state) {
    if (!state->isClosed && state->free > 0) {
        --state->free;
    } else if (!state->isClosed) {
        const Event turn;
        state->waiting.push_back(turn);
        co_await turn.happened();
    }
    // Checked again: it may have been closed since the turn came.
    co_return state->isClosed ? std::unique_ptr<Pass>() : std::make_unique<Pass>(state);
}

void Gate::close() {
    m_state->isClosed = true;
    for (const Event& turn : std::exchange(m_state->waiting, {})) {
        turn.happen();
    }
}

} // namespace ostrelle
