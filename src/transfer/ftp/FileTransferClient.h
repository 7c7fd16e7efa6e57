// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "transfer/ftp/ConnectionResult.h"
#include "transfer/ftp/FTPFileInfo.h"

#include <QCoroTask>
#include <QList>
#include <QString>
#include <QStringList>
#include <chrono>
#include <functional>
#include <optional>

namespace ostrelle {

/// Where a downloaded file goes.
struct DownloadTarget {
    QString path;
    bool isSecurityScoped = false;           ///< take access to its folder for the time of the download
    std::optional<qint64> expectedSize = {}; ///< in bytes, if known
};

/// How a download ended.
struct Download {
    qint64 bytes = 0;
    QString failure; ///< why the file may be short, a sentence; empty if the server sent all of it
};

/// Whether a file has stopped growing, and whether it grew meanwhile.
struct Stability {
    bool isStable = false;
    bool hasChanged = false;
    qint64 size = -1; ///< as last seen, in bytes; -1 if the file was never there
};

using DownloadProgress = std::function<void(qint64 bytesSoFar)>;

/// The folder of a server, whatever the protocol. Operations are independent of each other. They throw
/// FTPError.
class FileTransferClient {
public:
    virtual ~FileTransferClient() = default;

    /// As the program ends: what is under way fails soon, and so does all that comes later.
    virtual void abandon() {}

    virtual QCoro::Task<QList<FTPFileInfo>> listFiles() = 0;
    /// Why files may be missing in the latest listing, a sentence; empty if none are.
    virtual QString listingProblem() const { return {}; }
    /// Fetches a file of the folder. Calls `progress`, if there is one, about once a second and at the end.
    virtual QCoro::Task<Download> downloadFile(QString name, DownloadTarget target,
                                               DownloadProgress progress) = 0;
    /// Lists the folder once.
    virtual QCoro::Task<ConnectionResult> testConnection() = 0;
    /// The size of a file of the folder, in bytes.
    virtual QCoro::Task<qint64> fileSize(QString name) = 0;
    /// Waits until the file has stopped growing.
    virtual QCoro::Task<Stability> waitForFileStable(QString name, std::chrono::milliseconds checkInterval,
                                                     std::chrono::milliseconds timeout) = 0;
    /// Waits until all of the files have stopped growing. True if they have.
    virtual QCoro::Task<bool> waitForBatchStable(QStringList names, std::chrono::milliseconds checkInterval,
                                                 std::chrono::milliseconds timeout) = 0;
};

} // namespace ostrelle
