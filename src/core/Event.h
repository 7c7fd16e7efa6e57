// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <QFuture>
#include <QPromise>
#include <memory>

namespace ostrelle {

/// An event that happens once and that any number of coroutines can await. Copies are the same event.
class Event {
public:
    Event();

    /// Resumes all waiting coroutines in order of arrival. Only the first call counts.
    void happen() const { m_promise->finish(); }
    bool hasHappened() const { return m_promise->future().isFinished(); }
    /// Resumes when the event happens, or at once if it has happened. The object need not live that long.
    QCoro::Task<> happened() const { return wait(m_promise); }

private:
    static QCoro::Task<> wait(std::shared_ptr<QPromise<void>> promise);

    std::shared_ptr<QPromise<void>> m_promise;
};

} // namespace ostrelle
