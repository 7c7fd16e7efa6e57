// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/SessionEnd.h"
#include "core/TaskGroup.h"
#include "platform/ConsoleLog.h"
#include "platform/DesktopNotificationCenter.h"
#include "platform/DesktopSecretStore.h"
#include "platform/JsonDefaultsStore.h"
#include "platform/ProcessCommands.h"
#include "platform/SystemClock.h"
#include "product/AppFolders.h"
#include "program/CaptionProgram.h"
#include "shell/AppDelegate.h"
#include "shell/desktop/DesktopAlerts.h"
#include "shell/desktop/DesktopFileChooser.h"
#include "shell/desktop/DesktopWorkspace.h"
#include "transfer/ftp/CurlFtpStreams.h"

#include <QCoroTask>
#include <chrono>
#include <functional>

namespace ostrelle {

/// The composition root of `ostrelle-captions`. Needs the application object.
class DesktopProgram {
public:
    /// `ending` is called once, when the program starts to end.
    DesktopProgram(const AppFolders& folders, const ServiceEndpoints& endpoints,
                   std::function<void()> ending);
    DesktopProgram(const DesktopProgram&) = delete;
    DesktopProgram& operator=(const DesktopProgram&) = delete;

    AppDelegate& delegate() { return m_delegate; }

    /// Hides the windows, finishes work under way and ends the event loop; a second call ends it at once.
    void quit();
    /// The same for the end of the session, which may be told several times: only the first counts.
    void endWithSession();

private:
    ShellParts shellParts();
    static QCoro::Task<> forgetOld(DesktopProgram& program);
    static QCoro::Task<> finish(DesktopProgram& program);

    ConsoleLog m_console;
    ConsoleLog m_errors{stderr};
    JsonDefaultsStore m_defaults;
    DesktopSecretStore m_secrets;
    DesktopNotificationCenter m_notificationCenter{
        {.name = applicationName, .desktopEntry = applicationIdentifier, .hasWindow = true}};
    DesktopAlerts m_alerts;
    DesktopFileChooser m_files{m_defaults};
    DesktopWorkspace m_workspace{m_console};
    ProcessCommands m_commands{std::chrono::seconds(5)};
    AppEvents m_events;
    CurlFtpStreams m_streams;
    UnsandboxedAccess m_access;
    SystemClock m_clock;
    CaptionProgram m_captions;
    UpdateChecker m_updates;
    AppDelegate m_delegate;
    SessionEnd m_sessionEnd{m_captions.status};
    std::function<void()> m_ending;
    TaskGroup m_tasks{
        [this](const QString& words) { m_errors.print(QStringLiteral("ostrelle-captions: ") + words); }};
    bool m_isQuitting = false;
    bool m_isSessionEnding = false;
};

} // namespace ostrelle
