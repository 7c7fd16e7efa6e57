// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <QString>
#include <functional>
#include <memory>

namespace ostrelle {

/// Starts tasks that nobody awaits, and tells what escapes from them. The owner awaits finished() before it
/// lets go of what the tasks use: a task cannot be cancelled.
class TaskGroup {
public:
    /// `report` is given the words of each failure.
    explicit TaskGroup(std::function<void(const QString& words)> report);

    void spawn(QCoro::Task<> task);
    qsizetype running() const;
    /// Resumes when no task is left, those included that begin meanwhile.
    QCoro::Task<> finished() const;

private:
    struct State;
    static QCoro::Task<> run(std::shared_ptr<State> state, QCoro::Task<> task);

    std::shared_ptr<State> m_state;
};

} // namespace ostrelle
