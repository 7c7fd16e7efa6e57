// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"
#include "platform/CommandRunner.h"
#include "platform/PlainLog.h"
#include "shell/desktop/LaunchJob.h"

#include <QCoroTask>
#include <QString>
#include <chrono>
#include <memory>

namespace ostrelle {

/// Installs and removes the job that has the helper script watch for Photo Mechanic after each login. A
/// failure is only logged. Owned by a setting: see PhotoMechanicMonitoring.
class LaunchAgent {
public:
    /// The references must outlive the agent and its tasks.
    LaunchAgent(LaunchPaths paths, CommandRunner& commands, Clock& clock, PlainLog& log);

    /// Removes what is installed and installs it anew, so that a program that was moved is found.
    QCoro::Task<> install();
    QCoro::Task<> uninstall();
    /// From now on nothing is waited for, no command is started, and nothing is logged.
    void hurry() { m_isHurried = true; }

private:
    QCoro::Task<> installLaunchAgent();
    QCoro::Task<> uninstallLaunchAgent();
    QCoro::Task<> verifyLaunchAgent();
    QCoro::Task<> loadJob();
    QCoro::Task<> unloadJob();
    QCoro::Task<> removeJobFile();
    QCoro::Task<bool> isHelperRunning();
    QCoro::Task<> findJob();
    QCoro::Task<CommandResult> run(LaunchStep step);
    QCoro::Task<> wait(std::chrono::milliseconds span);
    void print(const QString& words);

    LaunchPaths m_paths;
    CommandRunner& m_commands;
    Clock& m_clock;
    PlainLog& m_log;
    std::unique_ptr<LaunchJob> m_job; ///< of the manager that this desktop has
    bool m_isHurried = false;
};

} // namespace ostrelle
