// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <QString>
#include <functional>
#include <memory>

namespace ostrelle {

/// Starts tasks that nobody awaits, and reports the exceptions that escape them. Tasks cannot be cancelled,
/// so the owner must await finished() before it destroys anything they use.
class TaskGroup {
public:
    /// `report` receives the description of each failure.
    explicit TaskGroup(std::function<void(const QString& words)> report);

    void spawn(QCoro::Task<> task);
    qsizetype running() const;
    /// Resumes when no task is left, including those started in the meantime.
    QCoro::Task<> finished() const;

private:
    struct State;
    static QCoro::Task<> run(std::shared_ptr<State> state, QCoro::Task<> task);

    std::shared_ptr<State> m_state;
};

} // namespace ostrelle
