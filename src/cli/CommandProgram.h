// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/Options.h"
#include "cli/RunOnlyDefaults.h"
#include "cli/RunOnlySecrets.h"
#include "cli/TerminalAlerts.h"
#include "platform/ConsoleLog.h"
#include "platform/DesktopNotificationCenter.h"
#include "platform/JsonDefaultsStore.h"
#include "platform/SystemClock.h"
#include "product/AppFolders.h"
#include "program/CaptionProgram.h"
#include "transfer/ftp/CurlFtpStreams.h"

#include <QCoroTask>
#include <QSet>
#include <QString>

namespace ostrelle {

/// The composition root of `ostrelle-caption`.
class CommandProgram {
public:
    CommandProgram(const Options& givenOptions, const AppFolders& folders, const ServiceEndpoints& endpoints);
    CommandProgram(const CommandProgram&) = delete;
    CommandProgram& operator=(const CommandProgram&) = delete;

    /// Takes the server's password from the keyring or from standard input; false if there is none.
    QCoro::Task<bool> findPassword();
    /// What is missing to caption anything; empty when nothing is.
    QString missingConfiguration() const;
    /// Prints on standard error if the names in the roster will not be used.
    void warnOfRoster();
    /// Prints on standard error if the record of captioned files could not be saved.
    void warnOfManifest();
    /// Prints the warning on standard error, once.
    void warn(const QString& warning);
    /// Finishes work under way. True when all results could be printed and saved.
    QCoro::Task<bool> finish();

    /// The images that failed in the last run, as absolute paths.
    QStringList lastFailed() const;

    const Options options;
    ConsoleLog output;
    ConsoleLog errors{stderr};
    JsonDefaultsStore defaults;

private:
    DefaultsStore& withRunOnlyValues();
    void takeIngestFolder(const QString& folder);
    void takeServer();
    void takeRosterOfFailed();
    bool asksNoModel() const;
    void rememberFailed();
    QCoro::Task<> passwordKnown();
    bool askForPassword();

    SilentLog m_silent;
    RunOnlyDefaults m_runOnly{defaults};
    RunOnlySecrets m_secrets;
    DesktopNotificationCenter m_notificationCenter{{applicationName, applicationIdentifier}};
    TerminalAlerts m_alerts{errors};
    AppEvents m_events;
    CurlFtpStreams m_streams;
    UnsandboxedAccess m_access;
    SystemClock m_clock;
    QSet<QString> m_warnings; ///< printed so far

public:
    CaptionProgram captions;
};

} // namespace ostrelle
