// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/CaptionTurns.h"

#include "core/Event.h"

#include <algorithm>
#include <deque>
#include <optional>
#include <utility>

namespace ostrelle {

namespace {

/// A waiting image or run, and how many places it needs.
struct Waiting {
    int places;
    Event answered = {};
    std::shared_ptr<bool> mayBegin = std::make_shared<bool>(false);
};

void admit(const Waiting& waiting) {
    *waiting.mayBegin = true;
    waiting.answered.happen();
}

} // namespace

/// An image takes one place and a run takes all of them.
struct CaptionTurns::State {
    int places;
    int free;
    bool isRunUnderWay = false;
    bool isClosed = false;
    bool isRunStopped = false; ///< the one under way
    std::deque<Waiting> waiting = {};
    std::optional<Event> resumption = {}; ///< while paused
    std::optional<Event> idle = {};       ///< for idle(), once called: happens when all places are free

    bool isIdle() const { return free == places; }
    bool isRun(int wanted) const { return wanted == places; }
    void give(int given) {
        free += given;
        isRunUnderWay = isRunUnderWay && !isRun(given);
        isRunStopped = isRunStopped && isRunUnderWay;
        admitNext();
        if (isIdle() && idle) {
            std::exchange(idle, std::nullopt)->happen();
        }
    }
    void admitNext() {
        while (!resumption && !waiting.empty() && waiting.front().places <= free) {
            const Waiting next = waiting.front();
            waiting.pop_front();
            free -= next.places;
            isRunUnderWay = isRun(next.places);
            admit(next);
        }
    }
    void resume() {
        if (const std::optional<Event> ended = std::exchange(resumption, std::nullopt)) {
            ended->happen();
            admitNext();
        }
    }
    /// Runs queue before images.
    void enqueue(const Waiting& newcomer) {
        const auto place = isRun(newcomer.places)
                               ? std::find_if(waiting.begin(), waiting.end(),
                                              [this](const Waiting& other) { return !isRun(other.places); })
                               : waiting.end();
        waiting.insert(place, newcomer);
    }
};

CaptionTurns::Turn::~Turn() {
    m_state->give(m_places);
}

CaptionTurns::CaptionTurns(int images)
    : m_state(std::make_shared<State>(State{.places = images, .free = images})) {}

QCoro::Task<std::unique_ptr<CaptionTurns::Turn>> CaptionTurns::imageTurn() {
    return wait(m_state, 1);
}

QCoro::Task<std::unique_ptr<CaptionTurns::Turn>> CaptionTurns::runTurn() {
    return wait(m_state, m_state->places);
}

QCoro::Task<std::unique_ptr<CaptionTurns::Turn>> CaptionTurns::wait(std::shared_ptr<State> state,
                                                                    int places) {
    if (state->isClosed) {
        co_return std::unique_ptr<Turn>();
    }
    const Waiting self{.places = places};
    state->enqueue(self);
    state->admitNext();
    co_await self.answered.happened();
    co_return *self.mayBegin ? std::make_unique<Turn>(state, places) : nullptr;
}

bool CaptionTurns::isClosed() const {
    return m_state->isClosed;
}

QCoro::Task<> CaptionTurns::idle() const {
    const std::shared_ptr<State> state = m_state;
    while (!state->isIdle()) {
        if (!state->idle) {
            state->idle.emplace();
        }
        co_await state->idle->happened();
    }
}

void CaptionTurns::dismissImages() {
    m_dismissals.overtake();
    std::deque<Waiting> runs;
    for (const Waiting& waiting : std::exchange(m_state->waiting, {})) {
        if (m_state->isRun(waiting.places)) {
            runs.push_back(waiting);
        } else {
            waiting.answered.happen();
        }
    }
    m_state->waiting = std::move(runs);
}

void CaptionTurns::stop() {
    m_state->isRunStopped = m_state->isRunUnderWay;
    dismissAll();
}

void CaptionTurns::setPaused(bool paused) {
    if (!paused) {
        m_state->resume();
    } else if (!m_state->resumption && !m_state->isClosed) {
        m_state->resumption.emplace();
    }
}

bool CaptionTurns::isPaused() const {
    return m_state->resumption.has_value();
}

QCoro::Task<bool> CaptionTurns::mayGoOn() const {
    const std::shared_ptr<State> state = m_state;
    while (state->resumption) {
        const Event resumed = *state->resumption;
        co_await resumed.happened();
    }
    co_return !state->isClosed && !state->isRunStopped;
}

bool CaptionTurns::isRunEnding() const {
    return m_state->isClosed || m_state->isRunStopped;
}

void CaptionTurns::close() {
    m_state->isClosed = true;
    dismissAll();
}

void CaptionTurns::dismissAll() {
    m_dismissals.overtake();
    m_stops.overtake();
    for (const Waiting& waiting : std::exchange(m_state->waiting, {})) {
        waiting.answered.happen();
    }
    m_state->resume();
}

} // namespace ostrelle
