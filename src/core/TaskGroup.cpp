// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/TaskGroup.h"

#include "core/Attempt.h"
#include "core/Event.h"

#include <optional>
#include <utility>

namespace ostrelle {

struct TaskGroup::State {
    std::function<void(const QString&)> report;
    qsizetype running = 0;
    std::optional<Event> idle = {}; ///< for those who wait until no task is left
};

TaskGroup::TaskGroup(std::function<void(const QString&)> report)
    : m_state(std::make_shared<State>(State{.report = std::move(report)})) {}

void TaskGroup::spawn(QCoro::Task<> task) {
    run(m_state, std::move(task)); // the frame owns itself from here on
}

qsizetype TaskGroup::running() const {
    return m_state->running;
}

QCoro::Task<> TaskGroup::run(std::shared_ptr<State> state, QCoro::Task<> task) {
    ++state->running;
    const auto done = co_await attempt(std::move(task));
    --state->running;
    if (!done) {
        state->report(done.words());
    }
    if (state->running == 0 && state->idle) {
        std::exchange(state->idle, std::nullopt)->happen();
    }
}

QCoro::Task<> TaskGroup::finished() const {
    const auto state = m_state;
    while (state->running > 0) {
        if (!state->idle) {
            state->idle.emplace();
        }
        co_await state->idle->happened();
    }
}

} // namespace ostrelle
