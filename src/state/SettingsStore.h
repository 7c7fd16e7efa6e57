// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/CaptionStyle.h"
#include "core/FallbackBehavior.h"
#include "core/SourceType.h"
#include "core/Sport.h"
#include "core/TaskGroup.h"
#include "core/TransferProtocol.h"
#include "platform/DefaultsStore.h"
#include "platform/FileReferences.h"
#include "platform/PlainLog.h"
#include "state/KeychainHelper.h"
#include "state/ReferenceThreads.h"

#include <QCoroTask>
#include <QDeadlineTimer>
#include <QObject>
#include <QPointer>
#include <QString>
#include <chrono>
#include <optional>

namespace ostrelle {

/// What the user wants: which folder is watched, for which style and sport a caption is written, how the
/// remote server is reached. There is no "save": a setter writes through at once, into the key of the
/// field's name, and emits the field's signal if the value is another one.
///
/// Paths are stored as file references and the server's password in the keychain. The model service's key
/// is not kept here, see ApiKey.h. For the thread of the event loop only.
class SettingsStore : public QObject {
    Q_OBJECT
    // clang-format off
    Q_PROPERTY(std::optional<QString> ingestFolder READ ingestFolder WRITE setIngestFolder
               NOTIFY ingestFolderChanged)
    Q_PROPERTY(std::optional<QString> codeReplacementsFile READ codeReplacementsFile
               WRITE setCodeReplacementsFile NOTIFY codeReplacementsFileChanged)
    Q_PROPERTY(bool hasAPIKey READ hasAPIKey WRITE setHasAPIKey NOTIFY hasAPIKeyChanged)
    Q_PROPERTY(CaptionStyle captionStyle READ captionStyle WRITE setCaptionStyle NOTIFY captionStyleChanged)
    Q_PROPERTY(FallbackBehavior fallbackBehavior READ fallbackBehavior WRITE setFallbackBehavior
               NOTIFY fallbackBehaviorChanged)
    Q_PROPERTY(Sport sport READ sport WRITE setSport NOTIFY sportChanged)
    Q_PROPERTY(bool autoMode READ autoMode WRITE setAutoMode NOTIFY autoModeChanged)
    Q_PROPERTY(bool useTeamIdentification READ useTeamIdentification WRITE setUseTeamIdentification
               NOTIFY useTeamIdentificationChanged)
    Q_PROPERTY(QString team1Name READ team1Name WRITE setTeam1Name NOTIFY team1NameChanged)
    Q_PROPERTY(QString team1Color READ team1Color WRITE setTeam1Color NOTIFY team1ColorChanged)
    Q_PROPERTY(QString team2Name READ team2Name WRITE setTeam2Name NOTIFY team2NameChanged)
    Q_PROPERTY(QString team2Color READ team2Color WRITE setTeam2Color NOTIFY team2ColorChanged)
    Q_PROPERTY(bool includeOffenseDefense READ includeOffenseDefense WRITE setIncludeOffenseDefense
               NOTIFY includeOffenseDefenseChanged)
    Q_PROPERTY(bool prioritizeAudioFiles READ prioritizeAudioFiles WRITE setPrioritizeAudioFiles
               NOTIFY prioritizeAudioFilesChanged)
    Q_PROPERTY(bool alwaysOverwriteCaptions READ alwaysOverwriteCaptions WRITE setAlwaysOverwriteCaptions
               NOTIFY alwaysOverwriteCaptionsChanged)
    Q_PROPERTY(bool appendCreditToCaption READ appendCreditToCaption WRITE setAppendCreditToCaption
               NOTIFY appendCreditToCaptionChanged)
    Q_PROPERTY(bool launchWithPhotoMechanic READ launchWithPhotoMechanic WRITE setLaunchWithPhotoMechanic
               NOTIFY launchWithPhotoMechanicChanged)
    Q_PROPERTY(QString defaultRightsFallback READ defaultRightsFallback WRITE setDefaultRightsFallback
               NOTIFY defaultRightsFallbackChanged)
    Q_PROPERTY(SourceType sourceType READ sourceType WRITE setSourceType NOTIFY sourceTypeChanged)
    Q_PROPERTY(TransferProtocol transferProtocol READ transferProtocol WRITE setTransferProtocol
               NOTIFY transferProtocolChanged)
    Q_PROPERTY(QString ftpHost READ ftpHost WRITE setFtpHost NOTIFY ftpHostChanged)
    Q_PROPERTY(QString ftpUsername READ ftpUsername WRITE setFtpUsername NOTIFY ftpUsernameChanged)
    Q_PROPERTY(QString ftpPassword READ ftpPassword WRITE setFtpPassword NOTIFY ftpPasswordChanged)
    Q_PROPERTY(QString ftpPath READ ftpPath WRITE setFtpPath NOTIFY ftpPathChanged)
    Q_PROPERTY(qint64 ftpPort READ ftpPort WRITE setFtpPort NOTIFY ftpPortChanged)
    Q_PROPERTY(std::optional<QString> destinationFolder READ destinationFolder WRITE setDestinationFolder
               NOTIFY destinationFolderChanged)
    Q_PROPERTY(std::optional<QString> ftpConnectionStatus READ ftpConnectionStatus
               WRITE setFtpConnectionStatus NOTIFY ftpConnectionStatusChanged)
    // clang-format on

public:
    /// How long a start waits for the file system to tell whether the three paths are still there.
    static constexpr std::chrono::milliseconds startPatience{250};

    /// Loads everything; the other arguments must outlive the store. A path whose file system does not answer
    /// within the patience is taken as it is stored, and given up later if it turns out to lead nowhere. The
    /// password comes when the keychain has
    /// answered, with ftpPasswordChanged(), unless the user has set another one by then. That of a locked
    /// keyring comes when it has been unlocked.
    SettingsStore(DefaultsStore& defaults, KeychainHelper& keychain, const FileReferences& references,
                  PlainLog& log, std::chrono::milliseconds patience = startPatience);

    /// Resumes when the file system has told of all paths, and those that were set have been handed to the
    /// store of defaults. One on a network share that hangs may take very long.
    QCoro::Task<> pathsSettled() const { return pathsSettled(m_looks); }

    /// Absolute paths.
    std::optional<QString> ingestFolder() const { return m_ingestFolder; }
    std::optional<QString> codeReplacementsFile() const { return m_codeReplacementsFile; }
    bool hasAPIKey() const { return m_hasAPIKey; }
    CaptionStyle captionStyle() const { return m_captionStyle; }
    FallbackBehavior fallbackBehavior() const { return m_fallbackBehavior; }
    Sport sport() const { return m_sport; }
    bool autoMode() const { return m_autoMode; }
    bool useTeamIdentification() const { return m_useTeamIdentification; }
    QString team1Name() const { return m_team1Name; }
    /// The name of a TeamColor.
    QString team1Color() const { return m_team1Color; }
    QString team2Name() const { return m_team2Name; }
    QString team2Color() const { return m_team2Color; }
    bool includeOffenseDefense() const { return m_includeOffenseDefense; }
    bool prioritizeAudioFiles() const { return m_prioritizeAudioFiles; }
    bool alwaysOverwriteCaptions() const { return m_alwaysOverwriteCaptions; }
    bool appendCreditToCaption() const { return m_appendCreditToCaption; }
    bool launchWithPhotoMechanic() const { return m_launchWithPhotoMechanic; }
    QString defaultRightsFallback() const { return m_defaultRightsFallback; }
    SourceType sourceType() const { return m_sourceType; }
    TransferProtocol transferProtocol() const { return m_transferProtocol; }
    QString ftpHost() const { return m_ftpHost; }
    QString ftpUsername() const { return m_ftpUsername; }
    QString ftpPassword() const { return m_ftpPassword; }
    /// False as long as an empty password may only mean that the keychain has not answered yet.
    bool isPasswordKnown() const { return m_isPasswordKnown; }
    QString ftpPath() const { return m_ftpPath; }
    /// As the user gave it: it may lie outside of what a port can be.
    qint64 ftpPort() const { return m_ftpPort; }
    std::optional<QString> destinationFolder() const { return m_destinationFolder; }
    std::optional<QString> ftpConnectionStatus() const { return m_ftpConnectionStatus; }

    /// The stored reference of the three paths follows when it has been made, see pathsSettled().
    void setIngestFolder(const std::optional<QString>& path);
    void setCodeReplacementsFile(const std::optional<QString>& path);
    void setDestinationFolder(const std::optional<QString>& path);

    /// Not stored: it follows from the key that is.
    void setHasAPIKey(bool has);
    /// Not stored: a choice of style lasts until the program ends.
    void setCaptionStyle(CaptionStyle style);
    void setFallbackBehavior(FallbackBehavior behavior);
    /// Any sport but football also turns includeOffenseDefense off.
    void setSport(Sport sport);
    void setAutoMode(bool on);
    void setUseTeamIdentification(bool on);
    void setTeam1Name(const QString& name);
    void setTeam1Color(const QString& color);
    void setTeam2Name(const QString& name);
    void setTeam2Color(const QString& color);
    void setIncludeOffenseDefense(bool on);
    void setPrioritizeAudioFiles(bool on);
    void setAlwaysOverwriteCaptions(bool on);
    void setAppendCreditToCaption(bool on);
    void setLaunchWithPhotoMechanic(bool on);
    void setDefaultRightsFallback(const QString& rights);
    /// The local source also clears ftpConnectionStatus.
    void setSourceType(SourceType type);
    /// Also moves the port, if it is the other protocol's default one.
    void setTransferProtocol(TransferProtocol protocol);
    void setFtpHost(const QString& host);
    void setFtpUsername(const QString& name);
    /// An empty password removes the stored one.
    void setFtpPassword(const QString& password);
    void setFtpPath(const QString& path);
    void setFtpPort(qint64 port);
    /// Not stored.
    void setFtpConnectionStatus(const std::optional<QString>& status);

Q_SIGNALS:
    void ingestFolderChanged();
    void codeReplacementsFileChanged();
    void hasAPIKeyChanged();
    void captionStyleChanged();
    void fallbackBehaviorChanged();
    void sportChanged();
    void autoModeChanged();
    void useTeamIdentificationChanged();
    void team1NameChanged();
    void team1ColorChanged();
    void team2NameChanged();
    void team2ColorChanged();
    void includeOffenseDefenseChanged();
    void prioritizeAudioFilesChanged();
    void alwaysOverwriteCaptionsChanged();
    void appendCreditToCaptionChanged();
    void launchWithPhotoMechanicChanged();
    void defaultRightsFallbackChanged();
    void sourceTypeChanged();
    void transferProtocolChanged();
    void ftpHostChanged();
    void ftpUsernameChanged();
    void ftpPasswordChanged();
    /// Comes once, after ftpPasswordChanged().
    void passwordKnown();
    void ftpPathChanged();
    void ftpPortChanged();
    void destinationFolderChanged();
    void ftpConnectionStatusChanged();

private:
    using Path = std::optional<QString>;
    using Signal = void (SettingsStore::*)();

    struct StoredPath;

    void load(std::chrono::milliseconds patience);
    void loadSwitches();
    void loadTexts();
    bool loadOrWriteTrue(const QString& key);
    static QCoro::Task<> loadPassword(QPointer<SettingsStore> store);
    void takePassword(const QString& password);

    template <typename T>
    void store(T& field, const std::type_identity_t<T>& value, const QString& key, Signal changed);
    void setPath(Path SettingsStore::* field, const Path& path, const QString& key, Signal changed);
    static QCoro::Task<> pathsSettled(TaskGroup looks);
    static QCoro::Task<> saveBookmark(QPointer<SettingsStore> store, Path SettingsStore::* field,
                                      QString key);
    StoredPath beginLoad(Path SettingsStore::* field, const QString& key, Signal changed);
    Path loadBookmark(const StoredPath& stored, const QDeadlineTimer& deadline);
    static QCoro::Task<> judgeLater(QPointer<SettingsStore> store, StoredPath stored);
    Path judged(const QString& key, const Attempt<ResolvedFile>& answer);
    Path presumed(const QByteArray& reference) const;

    DefaultsStore& m_defaults;
    KeychainHelper& m_keychain;
    const FileReferences& m_references;
    PlainLog& m_log;
    ReferenceThreads m_threads;
    TaskGroup m_looks;

    Path m_ingestFolder;
    Path m_codeReplacementsFile;
    bool m_hasAPIKey = false;
    CaptionStyle m_captionStyle = CaptionStyle::apSports;
    FallbackBehavior m_fallbackBehavior = FallbackBehavior::attemptCaption;
    Sport m_sport = Sport::football;
    bool m_autoMode = false;
    bool m_useTeamIdentification = false;
    QString m_team1Name;
    QString m_team1Color;
    QString m_team2Name;
    QString m_team2Color;
    bool m_includeOffenseDefense = false;
    bool m_prioritizeAudioFiles = false;
    bool m_alwaysOverwriteCaptions = true;
    bool m_appendCreditToCaption = true;
    bool m_launchWithPhotoMechanic = false;
    QString m_defaultRightsFallback;
    SourceType m_sourceType = SourceType::local;
    TransferProtocol m_transferProtocol = TransferProtocol::ftp;
    QString m_ftpHost;
    QString m_ftpUsername;
    QString m_ftpPassword;
    bool m_isPasswordKnown = false;
    QString m_ftpPath;
    qint64 m_ftpPort = defaultPort(TransferProtocol::ftp);
    Path m_destinationFolder;
    std::optional<QString> m_ftpConnectionStatus;
};

} // namespace ostrelle
