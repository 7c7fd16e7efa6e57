// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

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
#include "transfer/RemoteSource.h"

#include <QCoroTask>
#include <QObject>
#include <QString>
#include <memory>
#include <optional>

namespace ostrelle {

/// What auto mode works with. All of it has to outlive the controller.
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

/// The program's unattended state: while auto mode is on, the ingest folder is scanned or the remote server
/// polled every ten seconds. Checks what that requires, says why it cannot start, counts down to the next
/// scan, and starts anew when a setting changes. Nothing happens any more once it is destroyed.
class AutoModeController : public QObject {
    Q_OBJECT

public:
    explicit AutoModeController(AutoModeParts parts);

    /// From now on half a second after the last of a burst of changes, and half a second from now, auto mode
    /// is what the settings say. A change of the server's user, password, path or port does not restart it.
    void observeAutoModeSettings();

    /// Stops everything and starts what the arguments call for. Images that are queued but not begun are
    /// given back: somebody who turns auto mode off or chooses another folder expects that no further image
    /// is sent to the model. The first scan of a restart finds them anew. Images in the works are finished.
    void updateAutoMode(bool autoMode, SourceType sourceType, std::optional<QString> ingestFolder);

    /// A poll has ended: the countdown to the next begins.
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
    void say(const QString& words);

    AutoModeParts m_parts;
    TaskGroup m_tasks;
    std::unique_ptr<Timer> m_debounce;
    std::unique_ptr<Timer> m_pollTimer;
    std::unique_ptr<Timer> m_countdownTimer;
    qint64 m_secondsUntilNextScan = 0;
    bool m_isWaitingForPassword = false;
    quint64 m_starts = 0; // so that a start that waited sees whether it has been overtaken
};

} // namespace ostrelle
