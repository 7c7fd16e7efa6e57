// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/remote/ServerSource.h"

#include "transfer/ftp/FTPClient.h"

#include <chrono>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

ServerSource::ServerSource(ServerSourceParts parts)
    : m_parts(std::move(parts))
    , m_ledger(m_parts.clock)
    , m_transfers([this](const QString& words) { print(u"A transfer failed: "_s + words); })
    , m_captioning([this](const QString& words) { print(u"A caption task failed: "_s + words); }) {}

void ServerSource::start() {
    constexpr std::chrono::seconds interval{10};
    stop();
    if (*m_isAbandoned) {
        return;
    }
    m_watcher = makeWatcher();
    m_watcher->start(interval, [this](const QStringList& images) {
        m_parts.log.print(u"[FTPWatcher] Found %1 new files from FTP"_s.arg(images.size()));
        m_parts.onPolled();
        m_captioning.spawn(caption(m_parts.images.caption(images)));
    });
}

void ServerSource::stop() {
    if (m_watcher) {
        m_watcher->stop();
        m_transfers.spawn(keepUntilFinished(std::exchange(m_watcher, nullptr)));
    }
}

void ServerSource::abandon() {
    *m_isAbandoned = true;
    for (const std::weak_ptr<FTPWatcher>& known : m_watchers) {
        if (const std::shared_ptr<FTPWatcher> watcher = known.lock()) {
            watcher->abandon();
        }
    }
    stop();
}

void ServerSource::downloadAll() {
    if (m_parts.settings.sourceType() != SourceType::ftp) {
        print(u"Manual FTP download requested but source type is not FTP"_s);
        return;
    }
    if (*m_isAbandoned) {
        return;
    }
    const QString missing = missingForDownload();
    if (!missing.isEmpty()) {
        m_parts.status.setFtpStatusMessage(missing);
        return;
    }
    if (!m_watcher) {
        print(u"Creating FTP watcher for manual download"_s);
        m_watcher = makeWatcher();
    }
    print(u"Manual FTP download triggered"_s);
    const NewFiles onComplete = [this](const QStringList& images) {
        m_captioning.spawn(caption(m_parts.images.captionAll(images)));
    };
    m_transfers.spawn(download(m_watcher, onComplete));
}

/// Images that are stopped before their turn are handed on again by the next poll.
QCoro::Task<> ServerSource::caption(QCoro::Task<QStringList> captioning) {
    const QStringList left = co_await captioning;
    for (const QString& image : left) {
        m_ledger.takeBack(image);
    }
}

/// What the status shows; empty if nothing is missing.
QString ServerSource::missingForDownload() {
    const SettingsStore& settings = m_parts.settings;
    if (settings.ftpHost().isEmpty() || settings.ftpUsername().isEmpty() ||
        settings.ftpPassword().isEmpty()) {
        print(u"Manual FTP download requested but FTP configuration incomplete"_s);
        return u"FTP configuration incomplete"_s;
    }
    if (!settings.codeReplacementsFile()) {
        print(u"Manual FTP download requested but Code Replacements File is not set"_s);
        return u"Code Replacements File required"_s;
    }
    return {};
}

QCoro::Task<ConnectionResult> ServerSource::testConnection() {
    const std::unique_ptr<FileTransferClient> client = makeClient();
    co_return co_await client->testConnection();
}

std::unique_ptr<FileTransferClient> ServerSource::makeClient() const {
    const SettingsStore& settings = m_parts.settings;
    FtpAccount account{.host = settings.ftpHost(),
                       .username = settings.ftpUsername(),
                       .passwordProvider = [password = settings.ftpPassword()] { return password; },
                       .path = settings.ftpPath(),
                       .port = static_cast<int>(settings.ftpPort()),
                       .security = {.encryption = settings.ftpEncryption(),
                                    .trustedCertificate = settings.ftpTrustedCertificate()},
                       .isEncryptionOpen = !settings.isFtpEncryptionChosen()};
    return std::make_unique<FTPClient>(std::move(account), FtpParts{.makeStream = m_parts.makeStream,
                                                                    .clock = m_parts.clock,
                                                                    .log = m_parts.log,
                                                                    .access = m_parts.access,
                                                                    .threads = m_parts.threads,
                                                                    .status = m_parts.status,
                                                                    .isAbandoned = m_isAbandoned});
}

std::shared_ptr<FTPWatcher> ServerSource::makeWatcher() {
    std::erase_if(m_watchers, [](const auto& known) { return known.expired(); });
    const auto watcher = std::make_shared<FTPWatcher>(
        makeClient(), m_parts.settings.destinationFolder().value_or(m_parts.usualFolder),
        FTPWatcherParts{
            .status = m_parts.status,
            .manifest = m_parts.manifest,
            .ledger = m_ledger,
            .fetched = m_parts.fetched,
            .claims = m_parts.claims,
            .clock = m_parts.clock,
            .log = m_parts.log,
            .access = m_parts.access,
            .threads = m_parts.threads,
            .listener = {.begun = [this](const QString& name) { Q_EMIT fetchBegan(name); },
                         .ended = [this](const FetchedFile& file) { Q_EMIT fetchEnded(file); },
                         .allEnded = [this](const QString& failure) { Q_EMIT transferEnded(failure); }}});
    m_watchers.push_back(watcher);
    return watcher;
}

QCoro::Task<> ServerSource::finished() const {
    co_await m_transfers.finished();
    co_await m_captioning.finished();
}

QCoro::Task<> ServerSource::keepUntilFinished(std::shared_ptr<FTPWatcher> watcher) {
    co_await watcher->finished();
}

QCoro::Task<> ServerSource::download(std::shared_ptr<FTPWatcher> watcher, NewFiles onComplete) {
    co_await watcher->downloadAllFiles(onComplete);
}

void ServerSource::print(const QString& words) {
    m_parts.log.print(u"[AppDelegate] "_s + words);
}

} // namespace ostrelle
