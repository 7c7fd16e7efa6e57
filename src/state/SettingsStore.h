// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/CaptionStyle.h"
#include "core/FallbackBehavior.h"
#include "core/FtpEncryption.h"
#include "core/SourceType.h"
#include "core/Sport.h"
#include "core/TaskGroup.h"
#include "core/TransferProtocol.h"
#include "platform/DefaultsStore.h"
#include "platform/FileReferences.h"
#include "platform/PlainLog.h"
#include "product/ApiKey.h"
#include "state/KeychainHelper.h"
#include "state/Publish.h"
#include "state/ReferenceThreads.h"
#include "state/StoredValue.h"

#include <QCoroTask>
#include <QDeadlineTimer>
#include <QObject>
#include <QPointer>
#include <QString>
#include <chrono>
#include <optional>
#include <type_traits>

namespace ostrelle {

// A setting of SettingsStore: a property, its getter, its signal nameChanged() and its first value. The
// setter is written by hand.
#define PUBLISHED_SETTING(Type, name, setName, first)                                                        \
    Q_PROPERTY(Type name READ name WRITE setName NOTIFY name##Changed)                                       \
public:                                                                                                      \
    Type name() const {                                                                                      \
        return m_##name.value;                                                                               \
    }                                                                                                        \
Q_SIGNALS:                                                                                                   \
    void name##Changed();                                                                                    \
                                                                                                             \
private:                                                                                                     \
    Setting<Type> m_##name{QStringLiteral(#name), &SettingsStore::name##Changed, first};                     \
                                                                                                             \
public:

// A setting that is loaded from the key of its name.
#define LOADED_SETTING(Type, name, setName, absent)                                                          \
    PUBLISHED_SETTING(Type, name, setName, loadStored<Type>(m_defaults, QStringLiteral(#name), absent))

// A setting that is loaded from the key of its name and stored there when it is set.
#define STORED_SETTING(Type, name, setName, absent)                                                          \
    LOADED_SETTING(Type, name, setName, absent)                                                              \
    void setName(const Type& value) {                                                                        \
        store(m_##name, value);                                                                              \
    }

/// What the user wants: which folder is watched, for which style and sport a caption is written, how the
/// remote server is reached. There is no "save": a setter writes through at once, into the key of the
/// setting's name, and emits the setting's signal if the value has changed.
///
/// Paths are stored as file references and the server's password in the keychain. The model service's key
/// is not kept here, see ApiKey.h. For the thread of the event loop only.
class SettingsStore : public QObject {
    Q_OBJECT

    template <typename T>
    struct Setting {
        QString key;
        void (SettingsStore::*changed)();
        T value;
    };
    using Path = std::optional<QString>;
    using PathSetting = Setting<Path> SettingsStore::*;

    DefaultsStore& m_defaults; // first, as the settings are loaded from it where they are declared

public:
    /// How long a start waits for the file system to answer whether the three paths still exist.
    static constexpr std::chrono::milliseconds startPatience{250};

    /// Loads everything; the other arguments must outlive the store. A path whose file system does not answer
    /// within the patience is taken as stored, and dropped later if it leads nowhere. The password arrives
    /// with the keychain's answer, unless the user has set another one meanwhile; that of a locked keyring
    /// arrives when it is unlocked.
    SettingsStore(DefaultsStore& defaults, KeychainHelper& keychain, const FileReferences& references,
                  PlainLog& log, std::chrono::milliseconds patience = startPatience);

    /// Resumes when the file system has answered for all paths, and those that were set have been handed to
    /// the store of defaults. One on a network share that hangs may take very long.
    QCoro::Task<> pathsSettled() const { return pathsSettled(m_looks); }

    // Absolute paths. The stored reference follows when it has been made, see pathsSettled().
    PUBLISHED_SETTING(std::optional<QString>, ingestFolder, setIngestFolder, std::nullopt)
    PUBLISHED_SETTING(std::optional<QString>, codeReplacementsFile, setCodeReplacementsFile, std::nullopt)
    PUBLISHED_SETTING(std::optional<QString>, destinationFolder, setDestinationFolder, std::nullopt)
    void setIngestFolder(const Path& path) { setPath(&SettingsStore::m_ingestFolder, path); }
    void setCodeReplacementsFile(const Path& path) { setPath(&SettingsStore::m_codeReplacementsFile, path); }
    void setDestinationFolder(const Path& path) { setPath(&SettingsStore::m_destinationFolder, path); }

    /// Not stored: it follows from the key that is.
    PUBLISHED_SETTING(bool, hasAPIKey, setHasAPIKey, !apiKey(m_defaults).isEmpty())
    void setHasAPIKey(bool has) { publish(m_hasAPIKey, has); }
    /// Read at a start, never stored: a choice of style lasts until the program ends.
    LOADED_SETTING(CaptionStyle, captionStyle, setCaptionStyle, CaptionStyle::apSports)
    void setCaptionStyle(CaptionStyle style) { publish(m_captionStyle, style); }
    STORED_SETTING(FallbackBehavior, fallbackBehavior, setFallbackBehavior, FallbackBehavior::attemptCaption)
    /// Any sport but football also turns includeOffenseDefense off.
    LOADED_SETTING(Sport, sport, setSport, Sport::football)
    void setSport(Sport sport);
    STORED_SETTING(bool, autoMode, setAutoMode, false)
    STORED_SETTING(bool, useTeamIdentification, setUseTeamIdentification, false)
    STORED_SETTING(QString, team1Name, setTeam1Name, QString())
    STORED_SETTING(QString, team1Color, setTeam1Color, QStringLiteral("Blue")) // a TeamColor's name
    STORED_SETTING(QString, team2Name, setTeam2Name, QString())
    STORED_SETTING(QString, team2Color, setTeam2Color, QStringLiteral("White"))
    STORED_SETTING(bool, includeOffenseDefense, setIncludeOffenseDefense, false)
    STORED_SETTING(bool, prioritizeAudioFiles, setPrioritizeAudioFiles, false)
    // The first start turns these two on.
    STORED_SETTING(bool, alwaysOverwriteCaptions, setAlwaysOverwriteCaptions, false)
    STORED_SETTING(bool, appendCreditToCaption, setAppendCreditToCaption, false)
    STORED_SETTING(bool, launchWithPhotoMechanic, setLaunchWithPhotoMechanic, false)
    STORED_SETTING(QString, defaultRightsFallback, setDefaultRightsFallback, QString())
    /// The local source also clears ftpConnectionStatus.
    LOADED_SETTING(SourceType, sourceType, setSourceType, SourceType::local)
    void setSourceType(SourceType type);
    /// Also moves the port, if it is the other protocol's default one.
    LOADED_SETTING(TransferProtocol, transferProtocol, setTransferProtocol, TransferProtocol::ftp)
    void setTransferProtocol(TransferProtocol protocol);
    /// Another host also clears ftpTrustedCertificate.
    LOADED_SETTING(QString, ftpHost, setFtpHost, QString())
    void setFtpHost(const QString& host);
    STORED_SETTING(QString, ftpUsername, setFtpUsername, QString())
    /// An empty password removes the stored one.
    PUBLISHED_SETTING(QString, ftpPassword, setFtpPassword, QString())
    void setFtpPassword(const QString& password);
    /// False as long as an empty password may only mean that the keychain has not answered yet.
    bool isPasswordKnown() const { return m_isPasswordKnown; }
    /// False after the keychain has refused the password, which then lasts until the program ends.
    bool isPasswordKept() const { return m_isPasswordKept; }
    STORED_SETTING(QString, ftpPath, setFtpPath, QStringLiteral("/"))
    /// As the user gave it: it need not be a valid port.
    STORED_SETTING(qint64, ftpPort, setFtpPort, defaultPort(TransferProtocol::ftp))
    STORED_SETTING(FtpEncryption, ftpEncryption, setFtpEncryption, FtpEncryption::none)
    /// False as long as nobody has decided for or against encryption.
    bool isFtpEncryptionChosen() const { return m_defaults.exists(m_ftpEncryption.key); }
    /// The SHA-256 fingerprint of the server's certificate, if the user trusts just that one; or empty.
    STORED_SETTING(QString, ftpTrustedCertificate, setFtpTrustedCertificate, QString())
    /// As before any choice.
    void resetFtpEncryption();
    /// Not stored.
    PUBLISHED_SETTING(std::optional<QString>, ftpConnectionStatus, setFtpConnectionStatus, std::nullopt)
    void setFtpConnectionStatus(const std::optional<QString>& status) {
        publish(m_ftpConnectionStatus, status);
    }

Q_SIGNALS:
    /// Emitted once, after ftpPasswordChanged().
    void passwordKnown();
    void isPasswordKeptChanged();

private:
    template <typename T>
    void publish(Setting<T>& setting, const std::type_identity_t<T>& value) {
        ostrelle::publish(this, setting.value, value, setting.changed);
    }
    template <typename T>
    void store(Setting<T>& setting, const T& value) {
        m_defaults.set(setting.key, toStored(value));
        publish(setting, value);
    }

    void load(std::chrono::milliseconds patience);
    static QCoro::Task<> loadPassword(QPointer<SettingsStore> store);
    void takePassword(const QString& password);
    void setIsPasswordKept(bool isKept) {
        ostrelle::publish(this, m_isPasswordKept, isKept, &SettingsStore::isPasswordKeptChanged);
    }

    void setPath(PathSetting setting, const Path& path);
    static QCoro::Task<> pathsSettled(TaskGroup looks);
    static QCoro::Task<> saveBookmark(QPointer<SettingsStore> store, PathSetting setting);
    std::optional<ReferenceLook> lookFor(PathSetting setting);
    Path loadBookmark(PathSetting setting, const std::optional<ReferenceLook>& look,
                      const QDeadlineTimer& deadline);
    static QCoro::Task<> judgeLater(QPointer<SettingsStore> store, PathSetting setting, ReferenceLook look);
    Path judged(const QString& key, const Attempt<ResolvedFile>& answer);

    KeychainHelper& m_keychain;
    PlainLog& m_log;
    ReferenceThreads m_threads;
    TaskGroup m_looks;
    bool m_isPasswordKnown = false;
    bool m_isPasswordKept = true;
};

#undef STORED_SETTING
#undef LOADED_SETTING
#undef PUBLISHED_SETTING

} // namespace ostrelle
