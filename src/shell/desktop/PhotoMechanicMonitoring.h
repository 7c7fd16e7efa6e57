// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/TaskGroup.h"
#include "platform/StartedPrograms.h"
#include "platform/Workspace.h"
#include "shell/desktop/LaunchAgent.h"
#include "state/SettingsStore.h"

#include <QCoroTask>
#include <QObject>
#include <functional>
#include <memory>

namespace ostrelle {

/// Brings the program up when Photo Mechanic starts, as the setting has it: while the program runs by
/// watching for that start, and while it does not through the launch agent.
class PhotoMechanicMonitoring : public QObject {
    Q_OBJECT

public:
    /// `showWindow` puts the main window in front. The references must outlive the object and its tasks.
    PhotoMechanicMonitoring(LaunchPaths paths, const SettingsStore& settings, CommandRunner& commands,
                            Workspace& workspace, std::function<void()> showWindow, Clock& clock,
                            PlainLog& log);

    /// Follows the setting as it is now. Several calls in a row end in the state of the last.
    void setupPhotoMechanicMonitoring();
    /// The program is ending: stops watching. The agent stays.
    void stop();
    /// Resumes when no command is under way: soon after stop().
    QCoro::Task<> finished() const;

private:
    QCoro::Task<> followSetting();

    const SettingsStore& m_settings;
    Workspace& m_workspace;
    std::function<void()> m_showWindow;
    Clock& m_clock;
    PlainLog& m_log;
    LaunchAgent m_agent;
    TaskGroup m_tasks;
    bool m_isWanted = false; ///< the agent is to be looked after once more
    bool m_isAtWork = false;
    std::unique_ptr<StartedPrograms> m_photoMechanicObserver;
    std::unique_ptr<Timer> m_patience;
};

/// Whether a process of this name (/proc/PID/comm, or the command of a Wine process) is Photo Mechanic.
bool isPhotoMechanic(const QString& name);

} // namespace ostrelle
