// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <QFuture>
#include <QPromise>
#include <memory>

namespace ostrelle {

/// Something that happens once, and that any number of coroutines may wait for. Copies are the same event.
class Event {
public:
    Event();

    /// Resumes everybody who waits, in the order in which they came. Only the first call counts.
    void happen() const { m_promise->finish(); }
    bool hasHappened() const { return m_promise->future().isFinished(); }
    /// Resumes when it happens, or at once if it has. The event need not live that long.
    QCoro::Task<> happened() const { return wait(m_promise); }

private:
    static QCoro::Task<> wait(std::shared_ptr<QPromise<void>> promise);

    std::shared_ptr<QPromise<void>> m_promise;
};

} // namespace ostrelle
