// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/SettingsStore.h"

#include "core/Error.h"
#include "product/ApiKey.h"
#include "state/Publish.h"

#include <QByteArray>
#include <QCoroFuture>
#include <QCoroTimer>
#include <QMetaObject>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString passwordAccount = u"FTPPassword"_s;

QVariant toStored(bool value) {
    return value;
}

QVariant toStored(qint64 value) {
    return value;
}

QVariant toStored(const QString& value) {
    return value;
}

template <typename Enum>
    requires std::is_enum_v<Enum>
QVariant toStored(Enum value) {
    return rawValue(value);
}

bool loadSwitch(const DefaultsStore& defaults, const QString& key) {
    return defaults.get<bool>(key).value_or(false);
}

QString loadText(const DefaultsStore& defaults, const QString& key, const QString& absent = {}) {
    return defaults.get<QString>(key).value_or(absent);
}

/// The case of the stored raw value. An unknown one counts as absent and stays in the store.
template <typename Enum>
Enum loadCase(const DefaultsStore& defaults, const QString& key, Enum absent) {
    return fromRawValue<Enum>(loadText(defaults, key)).value_or(absent);
}

} // namespace

/// One of the three paths, while it is looked for.
struct SettingsStore::StoredPath {
    Path SettingsStore::* field;
    QString key;
    Signal changed;
    std::optional<ReferenceLook> look; ///< none where nothing is stored
};

template <typename T>
void SettingsStore::store(T& field, const std::type_identity_t<T>& value, const QString& key,
                          Signal changed) {
    m_defaults.set(key, toStored(value));
    publish(this, field, value, changed);
}

SettingsStore::SettingsStore(DefaultsStore& defaults, KeychainHelper& keychain,
                             const FileReferences& references, PlainLog& log,
                             std::chrono::milliseconds patience)
    : m_defaults(defaults)
    , m_keychain(keychain)
    , m_references(references)
    , m_log(log)
    , m_threads(references)
    , m_looks([&log](const QString& words) {
        log.print(u"[SettingsStore] A path could not be looked at: "_s + words);
    }) {
    load(patience);
}

// The order counts: what is written back at the end depends on what is read before.
void SettingsStore::load(std::chrono::milliseconds patience) {
    const QDeadlineTimer deadline(patience);
    const StoredPath ingest =
        beginLoad(&SettingsStore::m_ingestFolder, u"ingestFolder"_s, &SettingsStore::ingestFolderChanged);
    const StoredPath roster = beginLoad(&SettingsStore::m_codeReplacementsFile, u"codeReplacementsFile"_s,
                                        &SettingsStore::codeReplacementsFileChanged);
    const StoredPath destination = beginLoad(&SettingsStore::m_destinationFolder, u"destinationFolder"_s,
                                             &SettingsStore::destinationFolderChanged);
    m_ingestFolder = loadBookmark(ingest, deadline);
    m_codeReplacementsFile = loadBookmark(roster, deadline);
    m_captionStyle = loadCase(m_defaults, u"captionStyle"_s, CaptionStyle::apSports);
    m_fallbackBehavior = loadCase(m_defaults, u"fallbackBehavior"_s, FallbackBehavior::attemptCaption);
    m_sport = loadCase(m_defaults, u"sport"_s, Sport::football);
    m_hasAPIKey = !apiKey(m_defaults).isEmpty();
    loadSwitches();
    loadTexts();
    m_sourceType = loadCase(m_defaults, u"sourceType"_s, SourceType::local);
    m_transferProtocol = loadCase(m_defaults, u"transferProtocol"_s, TransferProtocol::ftp);
    const std::optional<qint64> port = m_defaults.get<qint64>(u"ftpPort"_s);
    m_ftpPort = port.value_or(defaultPort(TransferProtocol::ftp));
    loadPassword(this);

    // Through its setter: unlike the other two, the reference to this folder is renewed at each start.
    setDestinationFolder(loadBookmark(destination, deadline));
    if (!port) {
        setFtpPort(defaultPort(m_transferProtocol));
    }
    // A choice of SFTP lasts beyond a restart only while the source is the local folder.
    if (m_sourceType == SourceType::ftp && m_transferProtocol == TransferProtocol::sftp) {
        setTransferProtocol(TransferProtocol::ftp);
    }
}

void SettingsStore::loadSwitches() {
    m_autoMode = loadSwitch(m_defaults, u"autoMode"_s);
    m_useTeamIdentification = loadSwitch(m_defaults, u"useTeamIdentification"_s);
    m_includeOffenseDefense = loadSwitch(m_defaults, u"includeOffenseDefense"_s);
    m_prioritizeAudioFiles = loadSwitch(m_defaults, u"prioritizeAudioFiles"_s);
    m_alwaysOverwriteCaptions = loadOrWriteTrue(u"alwaysOverwriteCaptions"_s);
    m_appendCreditToCaption = loadOrWriteTrue(u"appendCreditToCaption"_s);
    m_launchWithPhotoMechanic = loadSwitch(m_defaults, u"launchWithPhotoMechanic"_s);
}

void SettingsStore::loadTexts() {
    m_team1Name = loadText(m_defaults, u"team1Name"_s);
    m_team1Color = loadText(m_defaults, u"team1Color"_s, u"Blue"_s);
    m_team2Name = loadText(m_defaults, u"team2Name"_s);
    m_team2Color = loadText(m_defaults, u"team2Color"_s, u"White"_s);
    m_defaultRightsFallback = loadText(m_defaults, u"defaultRightsFallback"_s);
    m_ftpHost = loadText(m_defaults, u"ftpHost"_s);
    m_ftpUsername = loadText(m_defaults, u"ftpUsername"_s);
    m_ftpPath = loadText(m_defaults, u"ftpPath"_s, u"/"_s);
}

bool SettingsStore::loadOrWriteTrue(const QString& key) {
    if (m_defaults.exists(key)) {
        return loadSwitch(m_defaults, key);
    }
    m_defaults.set(key, true);
    return true;
}

QCoro::Task<> SettingsStore::loadPassword(QPointer<SettingsStore> store) {
    std::optional<QString> password = co_await store->m_keychain.load(passwordAccount);
    bool isUnlocked = true;
    while (store && !password && isUnlocked) { // a locked keyring says that there is none
        isUnlocked = co_await store->m_keychain.unlocked(passwordAccount);
        if (store && isUnlocked) {
            password = co_await store->m_keychain.load(passwordAccount);
        }
    }
    if (store && !store->m_isPasswordKnown) { // by the user's own word
        store->takePassword(password.value_or(QString()));
    }
}

void SettingsStore::takePassword(const QString& password) {
    publish(this, m_ftpPassword, password, &SettingsStore::ftpPasswordChanged);
    if (!std::exchange(m_isPasswordKnown, true)) {
        Q_EMIT passwordKnown();
    }
}

void SettingsStore::setIngestFolder(const Path& path) {
    setPath(&SettingsStore::m_ingestFolder, path, u"ingestFolder"_s, &SettingsStore::ingestFolderChanged);
}

void SettingsStore::setCodeReplacementsFile(const Path& path) {
    setPath(&SettingsStore::m_codeReplacementsFile, path, u"codeReplacementsFile"_s,
            &SettingsStore::codeReplacementsFileChanged);
}

void SettingsStore::setDestinationFolder(const Path& path) {
    setPath(&SettingsStore::m_destinationFolder, path, u"destinationFolder"_s,
            &SettingsStore::destinationFolderChanged);
}

void SettingsStore::setHasAPIKey(bool has) {
    publish(this, m_hasAPIKey, has, &SettingsStore::hasAPIKeyChanged);
}

void SettingsStore::setCaptionStyle(CaptionStyle style) {
    publish(this, m_captionStyle, style, &SettingsStore::captionStyleChanged);
}

void SettingsStore::setFallbackBehavior(FallbackBehavior behavior) {
    store(m_fallbackBehavior, behavior, u"fallbackBehavior"_s, &SettingsStore::fallbackBehaviorChanged);
}

void SettingsStore::setSport(Sport sport) {
    store(m_sport, sport, u"sport"_s, &SettingsStore::sportChanged);
    if (sport != Sport::football && m_includeOffenseDefense) {
        setIncludeOffenseDefense(false);
    }
}

void SettingsStore::setAutoMode(bool on) {
    store(m_autoMode, on, u"autoMode"_s, &SettingsStore::autoModeChanged);
}

void SettingsStore::setUseTeamIdentification(bool on) {
    store(m_useTeamIdentification, on, u"useTeamIdentification"_s,
          &SettingsStore::useTeamIdentificationChanged);
}

void SettingsStore::setTeam1Name(const QString& name) {
    store(m_team1Name, name, u"team1Name"_s, &SettingsStore::team1NameChanged);
}

void SettingsStore::setTeam1Color(const QString& color) {
    store(m_team1Color, color, u"team1Color"_s, &SettingsStore::team1ColorChanged);
}

void SettingsStore::setTeam2Name(const QString& name) {
    store(m_team2Name, name, u"team2Name"_s, &SettingsStore::team2NameChanged);
}

void SettingsStore::setTeam2Color(const QString& color) {
    store(m_team2Color, color, u"team2Color"_s, &SettingsStore::team2ColorChanged);
}

void SettingsStore::setIncludeOffenseDefense(bool on) {
    store(m_includeOffenseDefense, on, u"includeOffenseDefense"_s,
          &SettingsStore::includeOffenseDefenseChanged);
}

void SettingsStore::setPrioritizeAudioFiles(bool on) {
    store(m_prioritizeAudioFiles, on, u"prioritizeAudioFiles"_s, &SettingsStore::prioritizeAudioFilesChanged);
}

void SettingsStore::setAlwaysOverwriteCaptions(bool on) {
    store(m_alwaysOverwriteCaptions, on, u"alwaysOverwriteCaptions"_s,
          &SettingsStore::alwaysOverwriteCaptionsChanged);
}

void SettingsStore::setAppendCreditToCaption(bool on) {
    store(m_appendCreditToCaption, on, u"appendCreditToCaption"_s,
          &SettingsStore::appendCreditToCaptionChanged);
}

void SettingsStore::setLaunchWithPhotoMechanic(bool on) {
    store(m_launchWithPhotoMechanic, on, u"launchWithPhotoMechanic"_s,
          &SettingsStore::launchWithPhotoMechanicChanged);
}

void SettingsStore::setDefaultRightsFallback(const QString& rights) {
    store(m_defaultRightsFallback, rights, u"defaultRightsFallback"_s,
          &SettingsStore::defaultRightsFallbackChanged);
}

void SettingsStore::setSourceType(SourceType type) {
    store(m_sourceType, type, u"sourceType"_s, &SettingsStore::sourceTypeChanged);
    if (type == SourceType::local) {
        setFtpConnectionStatus(std::nullopt);
    }
}

void SettingsStore::setTransferProtocol(TransferProtocol protocol) {
    store(m_transferProtocol, protocol, u"transferProtocol"_s, &SettingsStore::transferProtocolChanged);
    const TransferProtocol other =
        protocol == TransferProtocol::sftp ? TransferProtocol::ftp : TransferProtocol::sftp;
    if (m_ftpPort == defaultPort(other)) { // any other port is the user's own choice
        setFtpPort(defaultPort(protocol));
    }
}

void SettingsStore::setFtpHost(const QString& host) {
    store(m_ftpHost, host, u"ftpHost"_s, &SettingsStore::ftpHostChanged);
}

void SettingsStore::setFtpUsername(const QString& name) {
    store(m_ftpUsername, name, u"ftpUsername"_s, &SettingsStore::ftpUsernameChanged);
}

void SettingsStore::setFtpPassword(const QString& password) {
    if (password.isEmpty()) {
        m_keychain.remove(passwordAccount);
    } else {
        m_keychain.save(password, passwordAccount);
    }
    takePassword(password);
}

void SettingsStore::setFtpPath(const QString& path) {
    store(m_ftpPath, path, u"ftpPath"_s, &SettingsStore::ftpPathChanged);
}

void SettingsStore::setFtpPort(qint64 port) {
    store(m_ftpPort, port, u"ftpPort"_s, &SettingsStore::ftpPortChanged);
}

void SettingsStore::setFtpConnectionStatus(const std::optional<QString>& status) {
    publish(this, m_ftpConnectionStatus, status, &SettingsStore::ftpConnectionStatusChanged);
}

void SettingsStore::setPath(Path SettingsStore::* field, const Path& path, const QString& key,
                            Signal changed) {
    publish(this, this->*field, path, changed);
    // In the next turn of the event loop, which stores the final value when it is set several times in this
    // one.
    QMetaObject::invokeMethod(
        this, [this, field, key] { m_looks.spawn(saveBookmark(this, field, key)); }, Qt::QueuedConnection);
}

QCoro::Task<> SettingsStore::pathsSettled(TaskGroup looks) {
    co_await QCoro::sleepFor(std::chrono::milliseconds(0)); // behind what waits for the next turn
    co_await looks.finished();
}

QCoro::Task<> SettingsStore::saveBookmark(QPointer<SettingsStore> store, Path SettingsStore::* field,
                                          QString key) {
    const Path path = store.data()->*field;
    if (!path) {
        store->m_defaults.remove(key);
        co_return;
    }
    QFuture<Attempt<QByteArray>> making = store->m_threads.make(*path);
    const Attempt<QByteArray> reference = co_await making;
    if (!store || store.data()->*field != path) {
        co_return; // the later value saves itself
    }
    if (reference) {
        store->m_defaults.set(key, *reference);
    } else {
        store->m_log.print(
            u"[SettingsStore] Failed to save bookmark for %1: %2"_s.arg(key, reference.words()));
    }
}

SettingsStore::StoredPath SettingsStore::beginLoad(Path SettingsStore::* field, const QString& key,
                                                   Signal changed) {
    const std::optional<QByteArray> reference = m_defaults.get<QByteArray>(key);
    return {.field = field,
            .key = key,
            .changed = changed,
            .look = reference ? std::optional(m_threads.resolve(*reference)) : std::nullopt};
}

SettingsStore::Path SettingsStore::loadBookmark(const StoredPath& stored, const QDeadlineTimer& deadline) {
    if (!stored.look) {
        return std::nullopt;
    }
    const auto patience = static_cast<int>(deadline.remainingTime());
    if (stored.look->isAnswered->tryAcquire(1, patience)) {
        return judged(stored.key, stored.look->answer.result());
    }
    m_looks.spawn(judgeLater(this, stored));
    return presumed(stored.look->reference);
}

QCoro::Task<> SettingsStore::judgeLater(QPointer<SettingsStore> store, StoredPath stored) {
    QFuture<Attempt<ResolvedFile>> looking = stored.look->answer;
    const Attempt<ResolvedFile> answer = co_await looking;
    if (!store || store->m_defaults.get<QByteArray>(stored.key) != stored.look->reference) {
        co_return; // another has been chosen
    }
    const Path path = store->judged(stored.key, answer);
    if (!path) {
        publish(store.data(), store.data()->*stored.field, path, stored.changed);
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

SettingsStore::Path SettingsStore::presumed(const QByteArray& reference) const {
    try {
        return m_references.pathOf(reference);
    } catch (const Error&) {
        return std::nullopt;
    }
}

} // namespace ostrelle
