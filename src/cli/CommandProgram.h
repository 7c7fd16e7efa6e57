// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/NoSecrets.h"
#include "cli/Options.h"
#include "cli/RunOnlyDefaults.h"
#include "cli/TerminalAlerts.h"
#include "platform/ConsoleLog.h"
#include "platform/DesktopNotificationCenter.h"
#include "platform/JsonDefaultsStore.h"
#include "platform/SystemClock.h"
#include "program/CaptionProgram.h"

#include <QCoroTask>
#include <QSet>
#include <QString>

#include "product/AppFolders.h"

namespace ostrelle {

/// A folder is watched from the command line, and no server.
class NoRemoteSource : public RemoteSource {
public:
    void start() override {}
    void stop() override {}
};

/// The composition root of `ostrelle-caption`.
class CommandProgram {
public:
    CommandProgram(const Options& givenOptions, const AppFolders& folders, const ServiceEndpoints& endpoints);
    CommandProgram(const CommandProgram&) = delete;
    CommandProgram& operator=(const CommandProgram&) = delete;

    /// What is missing before anything can be captioned; empty when nothing is.
    QString missingConfiguration() const;
    /// Says on standard error when the names of the roster will not be used.
    void warnOfRoster();
    /// Says on standard error that it could not be saved what has been captioned, if so.
    void warnOfManifest();
    /// Says it on standard error, once.
    void warn(const QString& warning);
    /// Finishes what is under way and says whether all results could be told and saved.
    QCoro::Task<bool> finish();

    const Options options;
    ConsoleLog output;
    ConsoleLog errors{stderr};
    JsonDefaultsStore defaults;

private:
    DefaultsStore& withRunOnlyValues();
    void takeIngestFolder(const QString& folder);

    SilentLog m_silent;
    RunOnlyDefaults m_runOnly{defaults};
    NoSecrets m_secrets;
    DesktopNotificationCenter m_notificationCenter{{applicationName, applicationIdentifier}};
    TerminalAlerts m_alerts{errors};
    AppEvents m_events;
    NoRemoteSource m_remote;
    UnsandboxedAccess m_access;
    SystemClock m_clock;
    QSet<QString> m_warnings; ///< said so far

public:
    CaptionProgram captions;
};

} // namespace ostrelle
