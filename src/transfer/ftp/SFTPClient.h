// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"
#include "platform/PlainLog.h"
#include "transfer/ftp/FTPClient.h"

namespace ostrelle {

/// Keeps the place of a transfer over SFTP, which this program does not have: whatever needs the server
/// throws FTPError::readError.
class SFTPClient : public FileTransferClient {
public:
    /// The references must outlive the tasks.
    SFTPClient(FtpAccount account, Clock& clock, PlainLog& log);

    QCoro::Task<QList<FTPFileInfo>> listFiles() override;
    QCoro::Task<Download> downloadFile(QString name, DownloadTarget target,
                                       DownloadProgress progress) override;
    QCoro::Task<ConnectionResult> testConnection() override;
    QCoro::Task<qint64> fileSize(QString name) override;
    QCoro::Task<Stability> waitForFileStable(QString name, std::chrono::milliseconds checkInterval,
                                             std::chrono::milliseconds timeout) override;
    QCoro::Task<bool> waitForBatchStable(QStringList names, std::chrono::milliseconds checkInterval,
                                         std::chrono::milliseconds timeout) override;

private:
    FtpAccount m_account;
    Clock& m_clock;
    PlainLog& m_log;
};

} // namespace ostrelle
