// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "transfer/ftp/FileTransferClient.h"
#include "transfer/ftp/FtpParts.h"
#include "transfer/ftp/StreamReader.h"

#include <functional>

namespace ostrelle {

/// Which folder of which server, and who asks for it.
struct FtpAccount {
    QString host;
    QString username;
    std::function<QString()> passwordProvider; ///< asked for each stream; the password is not kept
    QString path;                              ///< of the remote folder; empty for the topmost
    int port = 21;
    FtpSecurity security = {};
    bool isEncryptionOpen = false; ///< nobody has chosen yet: a connection test tries TLS first
};

/// Fetches files over FTP. Each listing and each file is a stream of its own; no connection is kept here. For
/// the thread of the event loop only; must outlive its tasks.
class FTPClient : public FileTransferClient {
public:
    FTPClient(FtpAccount account, FtpParts parts);

    void abandon() override { *m_parts.isAbandoned = true; }

    /// Cut short without an error at 1000 passes or when the connection breaks off. Throws
    /// FTPError::invalidListing for names that are not UTF-8.
    QCoro::Task<QList<FTPFileInfo>> listFiles() override;
    QString listingProblem() const override { return m_listingProblem; }
    /// Replaces the file at the target. Without an expected size it ends after 10,000 passes, 81,920,000
    /// bytes at most, as if complete; with one, only with the stream, beyond that size, or after 60 seconds
    /// without a byte. An empty file throws FTPError::readError and stays.
    QCoro::Task<Download> downloadFile(QString name, DownloadTarget target,
                                       DownloadProgress progress) override;
    /// Does not throw. Without encryption, also finds out whether the server offers it.
    QCoro::Task<ConnectionResult> testConnection() override;
    QCoro::Task<qint64> fileSize(QString name) override;
    QCoro::Task<Stability> waitForFileStable(QString name, std::chrono::milliseconds checkInterval,
                                             std::chrono::milliseconds timeout) override;
    QCoro::Task<bool> waitForBatchStable(QStringList names, std::chrono::milliseconds checkInterval,
                                         std::chrono::milliseconds timeout) override;

private:
    QCoro::Task<QList<FTPFileInfo>> list(StreamReader* given, QString password);
    QCoro::Task<ConnectionResult> tryToList(FtpAddress address, FtpServerFacts* facts);
    QString folder() const;
    FtpAddress addressOf(const QString& path) const;
    void print(const QString& words);

    FtpAccount m_account;
    FtpParts m_parts;
    QString m_listingProblem;
};

} // namespace ostrelle
