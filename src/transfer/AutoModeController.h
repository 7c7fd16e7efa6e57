// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Overtaking.h"
#include "core/SourceType.h"
#include "core/TaskGroup.h"
#include "platform/Clock.h"
#include "platform/DefaultsStore.h"
#include "platform/FolderThreads.h"
#include "platform/PlainLog.h"
#include "product/NotificationManager.h"
#include "state/SettingsStore.h"
#include "state/StatusStore.h"
#include "transfer/AutoModeRequirements.h"
#include "transfer/LocalFolderScan.h"
#include "transfer/remote/RemoteSource.h"

#include <QCoroTask>
#include <QObject>
#include <QString>
#include <memory>
#include <optional>

namespace ostrelle {

/// What auto mode works with. All of it must outlive the controller.
struct AutoModeParts {
    SettingsStore& settings;
    StatusStore& status;
    const DefaultsStore& defaults;
    LocalFolderScan& scan;
    RemoteSource& remote;
    NotificationManager& notifications;
    FolderThreads& threads;
    Clock& clock;
    PlainLog& log;
};

/// The program's unattended state: while auto mode is on, scans the ingest folder or polls the remote server
/// every ten seconds. Checks the requirements, shows why it cannot start, counts down to the next scan, and
/// restarts when a setting changes. Destroying it stops everything.
class AutoModeController : public QObject {
    Q_OBJECT

public:
    explicit AutoModeController(AutoModeParts parts);

    /// Follows the settings, half a second from now and half a second after the last of a burst of changes.
    /// Changes of the server's user, password, path or port do not restart auto mode.
    void observeAutoModeSettings();

    /// Stops everything and starts what the arguments call for. Images queued but not begun are withdrawn: a
    /// user who turns auto mode off or chooses another folder expects no further image to go to the model.
    /// The first scan after a restart finds them again. Images in the works are finished.
    void updateAutoMode(bool autoMode, SourceType sourceType, std::optional<QString> ingestFolder);

    /// Restarts the countdown when a poll has ended.
    void restartCountdown();

private:
    void scheduleUpdate();
    void stop();
    QCoro::Task<> startLocalAutoMode(QString folder);
    void startRemoteAutoMode();
    void watchFolder(const QString& folder);
    void refuse(const MissingRequirement& missing);
    void pollFolder();
    void startCountdown();
    void tickCountdown();
    void setCountdown(qint64 seconds);
    void idle(const QString& logLine, const QString& message);
    void print(const QString& words);

    AutoModeParts m_parts;
    TaskGroup m_tasks;
    std::unique_ptr<Timer> m_debounce;
    std::unique_ptr<Timer> m_pollTimer;
    std::unique_ptr<Timer> m_countdownTimer;
    qint64 m_secondsUntilNextScan = 0;
    bool m_isWaitingForPassword = false;
    Overtaking m_starts; // overtaken by each update: a start that has waited then gives up
};

} // namespace ostrelle
