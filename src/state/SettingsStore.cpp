// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/SettingsStore.h"

#include <QCoroFuture>
#include <QCoroTimer>
#include <QFuture>
#include <QMetaObject>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString passwordAccount = u"FTPPassword"_s;

} // namespace

SettingsStore::SettingsStore(DefaultsStore& defaults, KeychainHelper& keychain,
                             const FileReferences& references, PlainLog& log,
                             std::chrono::milliseconds patience)
    : m_defaults(defaults)
    , m_keychain(keychain)
    , m_log(log)
    , m_threads(references)
    , m_looks([&log](const QString& words) {
        log.print(u"[SettingsStore] A path could not be looked at: "_s + words);
    }) {
    keychain.setSaveListener([self = QPointer<SettingsStore>(this)](bool isKept) {
        if (self) {
            self->setIsPasswordKept(isKept);
        }
    });
    load(patience);
}

// The order counts: what is written back at the end depends on what is read before.
void SettingsStore::load(std::chrono::milliseconds patience) {
    const QDeadlineTimer deadline(patience);
    const auto ingest = lookFor(&SettingsStore::m_ingestFolder);
    const auto roster = lookFor(&SettingsStore::m_codeReplacementsFile);
    const auto destination = lookFor(&SettingsStore::m_destinationFolder);
    m_ingestFolder.value = loadBookmark(&SettingsStore::m_ingestFolder, ingest, deadline);
    m_codeReplacementsFile.value = loadBookmark(&SettingsStore::m_codeReplacementsFile, roster, deadline);
    if (!m_defaults.exists(m_alwaysOverwriteCaptions.key)) {
        setAlwaysOverwriteCaptions(true);
    }
    if (!m_defaults.exists(m_appendCreditToCaption.key)) {
        setAppendCreditToCaption(true);
    }
    loadPassword(this);

    // Through its setter: unlike the other two, the reference to this folder is renewed at each start.
    setDestinationFolder(loadBookmark(&SettingsStore::m_destinationFolder, destination, deadline));
    if (!m_defaults.get<qint64>(m_ftpPort.key)) {
        setFtpPort(defaultPort(transferProtocol()));
    }
    // A choice of SFTP lasts beyond a restart only while the source is the local folder.
    if (sourceType() == SourceType::ftp && transferProtocol() == TransferProtocol::sftp) {
        setTransferProtocol(TransferProtocol::ftp);
    }
}

QCoro::Task<> SettingsStore::loadPassword(QPointer<SettingsStore> store) {
    std::optional<QString> password = co_await store->m_keychain.load(passwordAccount);
    bool isUnlocked = true;
    while (store && !password && isUnlocked) { // a locked keyring looks like one without the password
        isUnlocked = co_await store->m_keychain.unlocked(passwordAccount);
        if (store && isUnlocked) {
            password = co_await store->m_keychain.load(passwordAccount);
        }
    }
    if (store && !store->m_isPasswordKnown) { // unless the user has set one
        store->takePassword(password.value_or(QString()));
    }
}

void SettingsStore::takePassword(const QString& password) {
    publish(m_ftpPassword, password);
    if (!std::exchange(m_isPasswordKnown, true)) {
        Q_EMIT passwordKnown();
    }
}

void SettingsStore::setFtpPassword(const QString& password) {
    if (password.isEmpty()) {
        m_keychain.remove(passwordAccount);
        setIsPasswordKept(true); // there is none to keep
    } else {
        m_keychain.save(password, passwordAccount);
    }
    takePassword(password);
}

void SettingsStore::setSport(Sport sport) {
    store(m_sport, sport);
    if (sport != Sport::football && includeOffenseDefense()) {
        setIncludeOffenseDefense(false);
    }
}

void SettingsStore::setSourceType(SourceType type) {
    store(m_sourceType, type);
    if (type == SourceType::local) {
        setFtpConnectionStatus(std::nullopt);
    }
}

void SettingsStore::setTransferProtocol(TransferProtocol protocol) {
    store(m_transferProtocol, protocol);
    const TransferProtocol other =
        protocol == TransferProtocol::sftp ? TransferProtocol::ftp : TransferProtocol::sftp;
    if (ftpPort() == defaultPort(other)) { // any other port is the user's own choice
        setFtpPort(defaultPort(protocol));
    }
}

void SettingsStore::setFtpHost(const QString& host) {
    if (host != ftpHost() && !ftpTrustedCertificate().isEmpty()) {
        setFtpTrustedCertificate({}); // it was the other server's
    }
    store(m_ftpHost, host);
}

void SettingsStore::resetFtpEncryption() {
    setFtpTrustedCertificate({});
    m_defaults.remove(m_ftpEncryption.key);
    publish(m_ftpEncryption, FtpEncryption::none);
}

void SettingsStore::setPath(PathSetting setting, const Path& path) {
    publish(this->*setting, path);
    // In the next turn of the event loop: of several values set in this one, only the last is stored.
    QMetaObject::invokeMethod(
        this, [this, setting] { m_looks.spawn(saveBookmark(this, setting)); }, Qt::QueuedConnection);
}

QCoro::Task<> SettingsStore::pathsSettled(TaskGroup looks) {
    co_await QCoro::sleepFor(std::chrono::milliseconds(0)); // after the saves queued for the next turn
    co_await looks.finished();
}

QCoro::Task<> SettingsStore::saveBookmark(QPointer<SettingsStore> store, PathSetting setting) {
    const Setting<Path> set = store.data()->*setting;
    if (!set.value) {
        store->m_defaults.remove(set.key);
        co_return;
    }
    QFuture<Attempt<QByteArray>> making = store->m_threads.make(*set.value);
    const Attempt<QByteArray> reference = co_await making;
    if (!store || (store.data()->*setting).value != set.value) {
        co_return; // the later value saves itself
    }
    if (reference) {
        store->m_defaults.set(set.key, *reference);
    } else {
        store->m_log.print(
            u"[SettingsStore] Failed to save bookmark for %1: %2"_s.arg(set.key, reference.words()));
    }
}

std::optional<ReferenceLook> SettingsStore::lookFor(PathSetting setting) {
    const auto reference = m_defaults.get<QByteArray>((this->*setting).key);
    return reference ? std::optional(m_threads.resolve(*reference)) : std::nullopt;
}

SettingsStore::Path SettingsStore::loadBookmark(PathSetting setting, const std::optional<ReferenceLook>& look,
                                                const QDeadlineTimer& deadline) {
    if (!look) {
        return std::nullopt;
    }
    if (const auto answer = look->answerBy(deadline)) {
        return judged((this->*setting).key, *answer);
    }
    m_looks.spawn(judgeLater(this, setting, *look));
    return m_threads.presumedPath(look->reference);
}

QCoro::Task<> SettingsStore::judgeLater(QPointer<SettingsStore> store, PathSetting setting,
                                        ReferenceLook look) {
    const Attempt<ResolvedFile> answer = co_await look.answer;
    if (!store) {
        co_return;
    }
    Setting<Path>& stored = store.data()->*setting;
    if (store->m_defaults.get<QByteArray>(stored.key) != look.reference) {
        co_return; // another has been chosen
    }
    if (const Path path = store->judged(stored.key, answer); !path) {
        store->publish(stored, path);
    }
}

/// The path that a stored reference leads to. A reference that leads nowhere is cleared.
SettingsStore::Path SettingsStore::judged(const QString& key, const Attempt<ResolvedFile>& answer) {
    const auto clear = [this, &key](const QString& line) {
        m_log.print(line);
        m_defaults.remove(key);
        return std::nullopt;
    };
    if (!answer) {
        return clear(
            u"[SettingsStore] Failed to load bookmark for %1: %2 - clearing"_s.arg(key, answer.words()));
    }
    if (answer->isStale) {
        return clear(u"[SettingsStore] Bookmark for %1 is stale - clearing"_s.arg(key));
    }
    if (!answer->isThere) {
        return clear(
            u"[SettingsStore] URL for %1 is no longer accessible: %2 - clearing"_s.arg(key, answer->path));
    }
    return answer->path;
}

} // namespace ostrelle
