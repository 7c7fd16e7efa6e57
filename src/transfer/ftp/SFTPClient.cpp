// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ftp/SFTPClient.h"

#include "transfer/ftp/FTPError.h"
#include "transfer/ftp/StabilityWait.h"

#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

[[noreturn]] void refuse() {
    throw FTPError(FTPError::Case::readError, u"This program cannot transfer over SFTP."_s);
}

} // namespace

SFTPClient::SFTPClient(FtpAccount account, Clock& clock, PlainLog& log)
    : m_account(std::move(account)), m_clock(clock), m_log(log) {}

QCoro::Task<QList<FTPFileInfo>> SFTPClient::listFiles() {
    refuse();
    co_return {};
}

QCoro::Task<Download> SFTPClient::downloadFile(QString, DownloadTarget, DownloadProgress) {
    refuse();
    co_return {};
}

QCoro::Task<ConnectionResult> SFTPClient::testConnection() {
    refuse();
    co_return {};
}

QCoro::Task<qint64> SFTPClient::fileSize(QString) {
    refuse();
    co_return 0;
}

QCoro::Task<Stability> SFTPClient::waitForFileStable(QString name, std::chrono::milliseconds checkInterval,
                                                     std::chrono::milliseconds timeout) {
    StabilityWait wait(*this, m_clock, m_log, u"SFTPClient"_s);
    co_return co_await wait.waitForFile(name, checkInterval, timeout);
}

QCoro::Task<bool> SFTPClient::waitForBatchStable(QStringList names, std::chrono::milliseconds checkInterval,
                                                 std::chrono::milliseconds timeout) {
    StabilityWait wait(*this, m_clock, m_log, u"SFTPClient"_s);
    co_return co_await wait.waitForBatch(names, checkInterval, timeout);
}

} // namespace ostrelle
