// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/AutoModeController.h"

#include "core/OnThreadPool.h"
#include "pipeline/CodeReplacements.h"

#include <QDir>
#include <algorithm>
#include <chrono>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::milliseconds debounceTime{500};
constexpr std::chrono::seconds pollInterval{10};
constexpr std::chrono::seconds countdownStep{1};
constexpr qint64 countdownStart = 9;

} // namespace

AutoModeController::AutoModeController(AutoModeParts parts)
    : m_parts(parts), m_tasks([&log = parts.log](const QString& words) {
        log.print(u"[AppDelegate] Auto mode could not start: "_s + words);
    }) {
    connect(&m_parts.settings, &SettingsStore::passwordKnown, this, [this] {
        const SettingsStore& settings = m_parts.settings;
        if (m_isWaitingForPassword && settings.autoMode() && settings.sourceType() == SourceType::ftp) {
            startRemoteAutoMode();
        }
    });
}

void AutoModeController::observeAutoModeSettings() {
    const auto observe = [this](void (SettingsStore::*changed)()) {
        connect(&m_parts.settings, changed, this, &AutoModeController::scheduleUpdate);
    };
    observe(&SettingsStore::autoModeChanged);
    observe(&SettingsStore::sourceTypeChanged);
    observe(&SettingsStore::ingestFolderChanged);
    observe(&SettingsStore::destinationFolderChanged);
    observe(&SettingsStore::ftpHostChanged);
    observe(&SettingsStore::ftpEncryptionChanged);
    observe(&SettingsStore::ftpTrustedCertificateChanged);
    observe(&SettingsStore::codeReplacementsFileChanged);
    scheduleUpdate();
}

void AutoModeController::scheduleUpdate() {
    m_debounce = m_parts.clock.after(debounceTime, [this] {
        const SettingsStore& settings = m_parts.settings;
        updateAutoMode(settings.autoMode(), settings.sourceType(), settings.ingestFolder());
    });
}

void AutoModeController::updateAutoMode(bool autoMode, SourceType sourceType,
                                        std::optional<QString> ingestFolder) {
    stop();
    if (!autoMode) {
        idle(u"Auto mode off - stopped watching"_s, u"Auto mode: Off"_s);
    } else if (sourceType == SourceType::ftp) {
        startRemoteAutoMode();
    } else if (ingestFolder) {
        m_tasks.spawn(startLocalAutoMode(*ingestFolder));
    } else { // the setting stays on, so that choosing a folder starts auto mode
        idle(u"Auto mode on but no folder selected"_s, u"Auto mode: No folder selected"_s);
    }
}

void AutoModeController::stop() {
    m_starts.overtake();
    m_isWaitingForPassword = false;
    m_pollTimer.reset();
    m_countdownTimer.reset();
    m_parts.scan.stop();
    m_parts.remote.stop();
    StatusStore& status = m_parts.status;
    status.setFtpStatusMessage(std::nullopt);
    status.setFtpRemarks({});
    status.setSourceTrouble(std::nullopt);
    status.setFtpIsChecking(false);
    status.setFtpIsDownloading(false);
    status.setFtpFilesFound(0);
    status.setFtpFilesDownloaded(0);
}

QCoro::Task<> AutoModeController::startLocalAutoMode(QString folder) {
    if (const auto missing = missingApiKey(m_parts.defaults)) {
        refuse(*missing);
        co_return;
    }
    if (!m_parts.settings.codeReplacementsFile()) {
        const Overtaking::Mark mark = m_starts.mark();
        auto search = [folder] { return findCodeReplacementsFile(folder).has_value(); };
        const bool isFound = co_await onThreadPool(m_parts.threads.of(folder), search);
        if (mark.isOvertaken()) {
            co_return;
        }
        if (!isFound) {
            refuse(missingLocalRoster());
            co_return;
        }
    }
    watchFolder(folder);
}

void AutoModeController::watchFolder(const QString& folder) {
    print(u"Auto mode on - polling %1 every 10 seconds"_s.arg(folder));
    m_parts.status.setLastMessage(u"Auto mode: Watching "_s + QDir(folder).dirName());
    m_pollTimer = m_parts.clock.every(pollInterval, [this] { pollFolder(); });
    startCountdown();
    m_parts.scan.startScan(folder);
}

void AutoModeController::startRemoteAutoMode() {
    m_isWaitingForPassword = isPasswordAwaited(m_parts.defaults, m_parts.settings);
    if (m_isWaitingForPassword) { // perhaps until the user unlocks the keyring
        idle(u"Auto mode on - waiting for the keyring"_s, u"Auto mode: Waiting for the keyring..."_s);
        return;
    }
    if (const auto missing = missingForRemote(m_parts.defaults, m_parts.settings)) {
        refuse(*missing);
        return;
    }
    print(u"Auto mode on - watching FTP server "_s + m_parts.settings.ftpHost());
    m_parts.status.setLastMessage(u"Auto mode: Watching FTP server"_s);
    m_parts.remote.start();
    startCountdown();
}

void AutoModeController::refuse(const MissingRequirement& missing) {
    if (missing.logLine) {
        print(*missing.logLine);
    }
    m_parts.status.setLastMessage(missing.message);
    m_parts.status.setNextScanCountdown(std::nullopt);
    if (missing.notification) {
        m_tasks.spawn(m_parts.notifications.postConfigurationMissing(*missing.notification));
    }
    m_parts.settings.setAutoMode(false);
}

void AutoModeController::pollFolder() {
    const std::optional<QString> folder = m_parts.settings.ingestFolder();
    if (!folder) {
        return;
    }
    print(u"Polling folder..."_s);
    restartCountdown();
    m_parts.scan.startScan(*folder);
}

void AutoModeController::startCountdown() {
    restartCountdown();
    m_countdownTimer = m_parts.clock.every(countdownStep, [this] { tickCountdown(); });
}

void AutoModeController::restartCountdown() {
    setCountdown(countdownStart);
}

void AutoModeController::tickCountdown() {
    setCountdown(std::max<qint64>(m_secondsUntilNextScan - 1, 0));
}

void AutoModeController::setCountdown(qint64 seconds) {
    m_secondsUntilNextScan = seconds;
    m_parts.status.setNextScanCountdown(seconds);
}

void AutoModeController::idle(const QString& logLine, const QString& message) {
    print(logLine);
    m_parts.status.setLastMessage(message);
    m_parts.status.setNextScanCountdown(std::nullopt);
}

void AutoModeController::print(const QString& words) {
    m_parts.log.print(u"[AppDelegate] "_s + words);
}

} // namespace ostrelle
