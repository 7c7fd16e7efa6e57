// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/TaskGroup.h"
#include "platform/Clock.h"

#include <QCoroTask>
#include <QObject>
#include <QSet>
#include <QString>
#include <functional>
#include <memory>

namespace ostrelle {

/// Watches for the start of a program among the user's processes, which it reads from /proc every two seconds
/// on a worker thread. Further processes of a program that runs already are no start, and neither is what
/// runs at first.
class StartedPrograms : public QObject {
    Q_OBJECT

public:
    /// `isMeant` judges a process's name, as in /proc/PID/comm (at most 15 bytes), on the worker thread. The
    /// clock must outlive the object.
    StartedPrograms(Clock& clock, std::function<bool(const QString& name)> isMeant,
                    QString processes = QStringLiteral("/proc"));

    QCoro::Task<> finished() const { return m_looks.finished(); }

Q_SIGNALS:
    void started();

private:
    QCoro::Task<> look();

    std::function<bool(const QString& name)> m_isMeant;
    QString m_processes;
    TaskGroup m_looks{[](const QString&) {}}; // which do not throw
    QSet<qint64> m_running;
    bool m_isFirstLook = true;
    bool m_isLooking = false;
    std::unique_ptr<Timer> m_timer;
};

} // namespace ostrelle
