// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "transfer/ftp/FTPClient.h"
#include "transfer/ftp/StreamReader.h"

#include <QByteArray>
#include <QCoroTask>
#include <QDateTime>
#include <QFile>
#include <QString>
#include <functional>
#include <memory>
#include <optional>

namespace ostrelle {

/// One file on its way from a server to the disk. Lives on the coroutine frame that executes it. The file is
/// written on the thread of its folder.
class FtpDownload {
public:
    FtpDownload(const FtpParts& parts, FtpAddress address, DownloadTarget target, DownloadProgress progress);

    /// Throws FTPError.
    QCoro::Task<Download> execute();

private:
    QCoro::Task<> createFile();
    QCoro::Task<> readAll();
    /// True when the loop is to end.
    bool hasEnough();
    QCoro::Task<> report();
    /// Begins to write what has come; the disk and the network work at the same time.
    QCoro::Task<> save();
    /// Resumes when all that was given to the disk has been written. Throws FTPError::cannotCreateFile.
    QCoro::Task<> saved();
    QCoro::Task<> close();
    void print(const QString& words);

    const FtpParts& m_parts;
    DownloadTarget m_target;
    DownloadProgress m_progress;
    StreamReader m_reader;
    std::shared_ptr<QFile> m_file;
    QByteArray m_unsaved;
    std::shared_ptr<QByteArray> m_atDisk;  ///< what is being written, which nobody touches
    std::optional<QCoro::Task<>> m_saving; ///< the write under way
    Download m_result;
    QDateTime m_lastReport;
};

} // namespace ostrelle
