// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/TaskGroup.h"
#include "shell/panel/ShellParts.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <functional>
#include <memory>

namespace ostrelle {

/// The settings' connection status after a test that succeeded. After any other it is the text to show.
extern const QString connectionSucceeded;

/// What the user can do from the settings window: asks what needs asking, and shows the result. Only one
/// question is open at a time.
class SettingsActions : public QObject {
    Q_OBJECT

public:
    explicit SettingsActions(ShellParts parts, QObject* parent = nullptr);

    /// Stores the key without surrounding white space; does nothing when nothing is left.
    void saveKey(const QString& entered);
    void clearKey();
    /// Makes or removes the desktop's entry that starts the program at each login, and tells how it is then.
    void setStartAtLogin(bool isOn);
    /// Tells how it is now.
    void lookAtStartAtLogin();
    /// Puts the result into the settings' connection status, unless the server has been cleared meanwhile.
    /// Asks whether to encrypt where the server offers it, and whether to trust a certificate that no
    /// authority has signed. Only one test runs at a time.
    void testConnection();
    bool isTestingConnection() const { return m_runningTest != nullptr; }
    /// Back to no server. The protocol stays.
    void clearFtpSettings();
    void clearStatistics();
    void clearPromptCache();

    /// Resumes when all tasks started here have ended.
    QCoro::Task<> finished() const { return allFinished(m_questions, m_tests, m_starts); }

Q_SIGNALS:
    void isTestingConnectionChanged();
    void statisticsCleared();
    void startAtLoginKnown(bool isOn);
    void promptCacheCleared();

private:
    using Self = QPointer<SettingsActions>;
    using RunningTest = std::shared_ptr<const bool>;

    static QCoro::Task<> allFinished(TaskGroup questions, TaskGroup tests, TaskGroup starts);
    static QCoro::Task<> settleStartAtLogin(Self self);
    static QCoro::Task<> confirmClearKey(Self self);
    static QCoro::Task<> confirmClearStatistics(Self self);
    static QCoro::Task<> confirmClearPromptCache(Self self);
    static QCoro::Task<ConnectionResult> connects(ConnectionTest test);
    static QCoro::Task<> runTest(Self self, ConnectionTest test, RunningTest running);
    /// Asks what the result gives reason to ask, and resumes with the answer; empty if that is nothing.
    static QCoro::Task<QString> askForSecurity(ShellParts parts, ConnectionResult result);
    /// True if the test is to be made again.
    static bool adjustSecurity(const ShellParts& parts, const ConnectionResult& result,
                               const QString& answer);

    void begin(QCoro::Task<> (*question)(Self self));
    void setRunningTest(RunningTest running);

    ShellParts m_parts;
    std::optional<bool> m_startAtLogin; ///< wanted, and not done yet
    bool m_isSettlingStart = false;
    RunningTest m_runningTest; // null when none runs, or when its result is no longer wanted
    TaskGroup m_questions;
    TaskGroup m_tests;
    TaskGroup m_starts; ///< at login: looked at while questions are asked
};

} // namespace ostrelle
