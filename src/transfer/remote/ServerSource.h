// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/TaskGroup.h"
#include "platform/Clock.h"
#include "platform/FileAccess.h"
#include "platform/FolderThreads.h"
#include "platform/PlainLog.h"
#include "state/ProcessedFilesManifest.h"
#include "state/SettingsStore.h"
#include "state/StatusStore.h"
#include "transfer/ftp/FtpStream.h"
#include "transfer/remote/DownloadedImages.h"
#include "transfer/remote/FTPWatcher.h"
#include "transfer/remote/FetchLedger.h"
#include "transfer/remote/FetchedImages.h"
#include "transfer/remote/RemoteSource.h"

#include <QCoroTask>
#include <QObject>
#include <QString>
#include <functional>
#include <memory>
#include <vector>

namespace ostrelle {

/// What the server of the settings is watched with. All of it must outlive the source and its tasks.
struct ServerSourceParts {
    const SettingsStore& settings;
    StatusStore& status;
    ProcessedFilesManifest& manifest;
    DownloadedImages& images;
    FetchedImages& fetched;
    ImageClaims& claims;
    FtpStreamMaker makeStream;
    FileAccess& access;
    FolderThreads& threads;
    Clock& clock;
    PlainLog& log;
    QString usualFolder;            ///< of downloads, if the settings have none
    std::function<void()> onPolled; ///< called at the end of each completed poll
};

/// The server of the settings: watches it for auto mode, downloads everything when the user asks for it, and
/// has the images captioned. For the thread of the event loop only; await finished() before destroying it.
class ServerSource : public QObject, public RemoteSource {
    Q_OBJECT

public:
    explicit ServerSource(ServerSourceParts parts);

    void start() override;
    void stop() override;

    /// Starts a full download, or shows in the status why it cannot.
    void downloadAll();

    /// Lists the folder on the server once.
    QCoro::Task<ConnectionResult> testConnection();

    /// As the program ends: nothing more is fetched, and no part of a file is left behind.
    void abandon();
    /// Resumes when no transfer is under way and all images are captioned or dismissed.
    QCoro::Task<> finished() const;

Q_SIGNALS:
    void fetchBegan(const QString& name);
    void fetchEnded(const ostrelle::FetchedFile& file);
    /// A poll or a full download has ended; `failure` is empty unless it failed as a whole.
    void transferEnded(const QString& failure);

private:
    std::unique_ptr<FileTransferClient> makeClient() const;
    std::shared_ptr<FTPWatcher> makeWatcher();
    QString missingForDownload();
    QCoro::Task<> caption(QCoro::Task<QStringList> captioning);
    static QCoro::Task<> keepUntilFinished(std::shared_ptr<FTPWatcher> watcher);
    static QCoro::Task<> download(std::shared_ptr<FTPWatcher> watcher, NewFiles onComplete);
    void print(const QString& words);

    ServerSourceParts m_parts;
    FetchLedger m_ledger;
    std::vector<std::weak_ptr<FTPWatcher>> m_watchers;                   ///< all that may still transfer
    std::shared_ptr<bool> m_isAbandoned = std::make_shared<bool>(false); ///< shared with all clients
    std::shared_ptr<FTPWatcher> m_watcher; ///< of auto mode, or of the latest full download
    TaskGroup m_transfers;                 ///< of stopped watchers too
    TaskGroup m_captioning;
};

} // namespace ostrelle
