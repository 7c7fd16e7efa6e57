// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/settings/SettingsActions.h"

#include "core/Attempt.h"
#include "core/OffMainThread.h"
#include "product/ApiKey.h"
#include "shell/desktop/AutostartEntry.h"
#include "shell/panel/KeyEntry.h"

#include <optional>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

const QString connectionSucceeded = u"success"_s;

namespace {

Alert news(const QString& title, const QString& text) {
    Alert alert;
    alert.title = title;
    alert.text = text;
    alert.buttons = QStringList{u"OK"_s};
    return alert;
}

Alert warning(const QString& title, const QString& text, const QStringList& buttons,
              int destroyingButton = -1) {
    Alert alert;
    alert.title = title;
    alert.text = text;
    alert.buttons = buttons;
    alert.style = Alert::Style::warning;
    alert.destroyingButton = destroyingButton;
    return alert;
}

/// Which folder of which server a connection test is about.
struct ServerAddress {
    explicit ServerAddress(const SettingsStore& settings)
        : host(settings.ftpHost())
        , user(settings.ftpUsername())
        , path(settings.ftpPath())
        , port(settings.ftpPort()) {}
    bool operator==(const ServerAddress&) const = default;

    QString host;
    QString user;
    QString path;
    qint64 port;
};

Alert keyNotRemovedWarning() {
    return warning(
        u"API Key Not Removed"_s,
        u"Your OpenAI API key is no longer used, but it could not be removed from the disk and may be "
        "back when you start Ostrelle Captions again. Check that your home folder can be written to "
        "and that the disk is not full."_s,
        {u"OK"_s});
}

Alert encryptionQuestion(const QString& host) {
    Alert alert = news(u"Encrypt the Transfer?"_s,
                       u"%1 offers encryption by TLS. Without it, others in the same network can read the "
                       "password and the pictures. Once it is on, Ostrelle Captions no longer connects "
                       "without it."_s.arg(host));
    alert.buttons = QStringList{u"Encrypt"_s, u"Don't Encrypt"_s};
    return alert;
}

Alert certificateQuestion(const QString& host, const ConnectionResult& result) {
    return warning(u"Trust the Certificate of %1?"_s.arg(host),
                   result.reason + u"\n\nTrust it only if whoever runs the server tells you the same "
                                   "fingerprint. Ostrelle Captions then accepts just this certificate."_s,
                   {u"Cancel"_s, u"Trust This Certificate"_s}, 1);
}

Alert clearKeyQuestion() {
    return warning(u"Clear API Key?"_s,
                   u"This will remove your personal API key. You will need to add your own OpenAI API key to "
                   "continue using Ostrelle Captions. You can add your key back anytime."_s,
                   {u"Clear"_s, u"Cancel"_s}, 0);
}

Alert clearStatisticsQuestion() {
    return warning(
        u"Clear All Statistics?"_s,
        u"This will permanently delete all processing statistics, usage history, and cost tracking. "
        "This action cannot be undone."_s,
        {u"Cancel"_s, u"Clear Statistics"_s}, 1);
}

Alert clearPromptCacheQuestion() {
    return warning(u"Clear Prompt Cache?"_s,
                   u"This will clear all cached prompt templates. The app will fetch fresh prompts from the "
                   "server on the next caption generation."_s,
                   {u"Cancel"_s, u"Clear Cache"_s}, 1);
}

} // namespace

SettingsActions::SettingsActions(ShellParts parts, QObject* parent)
    : QObject(parent)
    , m_parts(parts)
    , m_questions([&console = parts.console](const QString& words) {
        console.print(u"[SettingsView] An action failed: "_s + words);
    })
    , m_tests([&console = parts.console](const QString& words) {
        console.print(u"[SettingsView] A connection test failed: "_s + words);
    })
    , m_starts([&console = parts.console](const QString& words) {
        console.print(u"[SettingsView] Cannot look at the start at login: "_s + words);
    }) {}

void SettingsActions::begin(QCoro::Task<> (*question)(Self self)) {
    if (m_questions.running() == 0) {
        m_questions.spawn(question(this));
    }
}

void SettingsActions::saveKey(const QString& entered) {
    if (m_questions.running() == 0) {
        m_questions.spawn(storeApiKey(m_parts, entered));
    }
}

void SettingsActions::clearKey() {
    begin(&SettingsActions::confirmClearKey);
}

void SettingsActions::clearStatistics() {
    begin(&SettingsActions::confirmClearStatistics);
}

void SettingsActions::clearPromptCache() {
    begin(&SettingsActions::confirmClearPromptCache);
}

QCoro::Task<> SettingsActions::allFinished(TaskGroup questions, TaskGroup tests, TaskGroup starts) {
    co_await questions.finished();
    co_await tests.finished();
    co_await starts.finished();
}

void SettingsActions::setStartAtLogin(bool isOn) {
    m_startAtLogin = isOn;
    lookAtStartAtLogin();
}

void SettingsActions::lookAtStartAtLogin() {
    if (!m_isSettlingStart) {
        m_starts.spawn(settleStartAtLogin(this));
    }
}

/// One change after the other, so that the last of several counts.
QCoro::Task<> SettingsActions::settleStartAtLogin(Self self) {
    const ShellParts parts = self->m_parts;
    const AutostartEntry entry(parts.launch);
    QString failure;
    self->m_isSettlingStart = true;
    do {
        const std::optional<bool> wanted = std::exchange(self->m_startAtLogin, std::nullopt);
        auto settle = [entry, wanted] {
            if (wanted) {
                entry.setOn(*wanted);
            }
            return true;
        };
        auto look = [entry] { return entry.isOn(); };
        const auto settled = co_await attemptOffMainThread(settle);
        const bool isOn = co_await offMainThread(look);
        if (!self) {
            co_return;
        }
        failure = settled ? QString() : settled.words();
        if (!self->m_startAtLogin) {
            Q_EMIT self->startAtLoginKnown(isOn);
        }
    } while (self->m_startAtLogin);
    self->m_isSettlingStart = false;
    if (!failure.isEmpty()) {
        const Alert notChanged = news(u"Start at Login Not Changed"_s, failure);
        co_await parts.alerts.show(notChanged);
    }
}

QCoro::Task<> SettingsActions::confirmClearKey(Self self) {
    const ShellParts parts = self->m_parts;
    const Alert question = clearKeyQuestion();
    const QString answer = co_await parts.alerts.show(question);
    if (answer != u"Clear") {
        co_return;
    }
    parts.defaults.remove(apiKeyName);
    parts.analytics.updateUserProperties();
    parts.settings.setHasAPIKey(false);
    parts.keyCheck.forget();
    const bool isSaved = co_await parts.defaults.saved(apiKeyName);
    if (!isSaved) {
        const Alert notRemoved = keyNotRemovedWarning();
        co_await parts.alerts.show(notRemoved);
    }
}

QCoro::Task<> SettingsActions::confirmClearStatistics(Self self) {
    const ShellParts parts = self->m_parts;
    const Alert question = clearStatisticsQuestion();
    const QString answer = co_await parts.alerts.show(question);
    if (answer != u"Clear Statistics") {
        co_return;
    }
    parts.status.clearStatistics();
    if (self) {
        Q_EMIT self->statisticsCleared();
    }
    const Alert cleared = news(u"Statistics Cleared"_s, u"All statistics have been cleared successfully."_s);
    co_await parts.alerts.show(cleared);
}

QCoro::Task<> SettingsActions::confirmClearPromptCache(Self self) {
    const ShellParts parts = self->m_parts;
    const Alert question = clearPromptCacheQuestion();
    const QString answer = co_await parts.alerts.show(question);
    if (answer != u"Clear Cache") {
        co_return;
    }
    parts.prompts.clearCache();
    if (self) {
        Q_EMIT self->promptCacheCleared();
    }
    const Alert cleared = news(u"Cache Cleared"_s, u"Prompt cache has been cleared successfully."_s);
    co_await parts.alerts.show(cleared);
}

void SettingsActions::testConnection() {
    if (isTestingConnection()) {
        return;
    }
    SettingsStore& settings = m_parts.settings;
    settings.setFtpConnectionStatus(std::nullopt);
    if (settings.ftpHost().isEmpty() || settings.ftpUsername().isEmpty() ||
        settings.ftpPassword().isEmpty()) {
        settings.setFtpConnectionStatus(u"Please fill in all required fields"_s);
    } else {
        setRunningTest(std::make_shared<const bool>(true));
        m_tests.spawn(runTest(this, m_parts.connectionTest, m_runningTest));
    }
}

QCoro::Task<ConnectionResult> SettingsActions::connects(ConnectionTest test) {
    co_return co_await test(); // this also catches what it throws before its first wait
}

QCoro::Task<> SettingsActions::runTest(Self self, ConnectionTest test, RunningTest running) {
    const ServerAddress tested(self->m_parts.settings);
    const auto isWanted = [&self, &running, &tested] {
        if (!self || self->m_runningTest != running) {
            return false;
        }
        const bool isSame = tested == ServerAddress(self->m_parts.settings);
        if (!isSame) { // what came out is true of another server
            self->setRunningTest(nullptr);
        }
        return isSame;
    };
    auto result = co_await attempt(connects(test));
    bool isAgain = true;
    while (isWanted() && result && isAgain) {
        const QString answer = co_await askForSecurity(self->m_parts, *result);
        isAgain = isWanted() && adjustSecurity(self->m_parts, *result, answer);
        if (isAgain) {
            result = co_await attempt(connects(test));
        }
    }
    if (!isWanted()) {
        co_return;
    }
    const bool isGood = result && result->isGood;
    const QString reason = result ? result->reason : result.words();
    self->m_parts.settings.setFtpConnectionStatus(isGood ? connectionSucceeded
                                                         : u"Connection failed\n"_s + reason);
    self->setRunningTest(nullptr);
    if (!result) {
        result.rethrow(); // for the log
    }
}

QCoro::Task<QString> SettingsActions::askForSecurity(ShellParts parts, ConnectionResult result) {
    const QString host = parts.settings.ftpHost();
    const bool hasCertificate = !result.untrustedCertificate.isEmpty();
    const bool isOpen = !parts.settings.isFtpEncryptionChosen();
    if (isOpen && result.isEncrypted && (result.isGood || hasCertificate)) {
        const Alert question = encryptionQuestion(host);
        co_return co_await parts.alerts.show(question);
    }
    if (hasCertificate) {
        const Alert question = certificateQuestion(host, result);
        co_return co_await parts.alerts.show(question);
    }
    co_return QString();
}

bool SettingsActions::adjustSecurity(const ShellParts& parts, const ConnectionResult& result,
                                     const QString& answer) {
    if (answer == u"Trust This Certificate") {
        parts.settings.setFtpTrustedCertificate(result.untrustedCertificate);
        return true;
    }
    if (answer == u"Encrypt" || answer == u"Don't Encrypt") {
        const bool isWanted = answer == u"Encrypt";
        parts.settings.setFtpEncryption(isWanted ? FtpEncryption::explicitTls : FtpEncryption::none);
        return true;
    }
    return false;
}

void SettingsActions::setRunningTest(RunningTest running) {
    m_runningTest = std::move(running);
    Q_EMIT isTestingConnectionChanged();
}

void SettingsActions::clearFtpSettings() {
    setRunningTest(nullptr);
    SettingsStore& settings = m_parts.settings;
    settings.setFtpHost({});
    settings.setFtpUsername({});
    settings.setFtpPassword({});
    settings.setFtpPath(u"/"_s);
    settings.setFtpPort(defaultPort(TransferProtocol::ftp));
    settings.resetFtpEncryption();
    settings.setFtpConnectionStatus(std::nullopt);
}

} // namespace ostrelle
