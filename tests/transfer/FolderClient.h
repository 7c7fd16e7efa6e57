// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "transfer/ftp/FTPError.h"
#include "transfer/ftp/FileTransferClient.h"

#include <gtest/gtest.h>

#include <QByteArray>
#include <QFile>
#include <QStringList>
#include <functional>
#include <map>

namespace ostrelle {

/// A folder on a server.
struct RemoteFolder {
    struct File {
        QByteArray bytes;
        QByteArray sent = {}; ///< what really comes, if not all
        int failures = 0;     ///< of its next downloads
    };

    std::map<QString, File> files;
    bool isReachable = true;
    bool isStable = true;
    QStringList calls; ///< listings, waits and downloads in their order
    std::function<void(const QString& name)> onDownload;
};

/// A client of that folder.
class FolderClient : public FileTransferClient {
public:
    explicit FolderClient(RemoteFolder& folder) : m_folder(folder) {}

    QCoro::Task<QList<FTPFileInfo>> listFiles() override {
        m_folder.calls.append(QStringLiteral("list"));
        if (!m_folder.isReachable) {
            throw FTPError(FTPError::Case::cannotOpenStream);
        }
        QList<FTPFileInfo> entries;
        for (const auto& [name, file] : m_folder.files) {
            entries.append({.name = name, .size = file.bytes.size(), .isDirectory = false});
        }
        co_return entries;
    }
    QCoro::Task<Download> downloadFile(QString name, DownloadTarget target,
                                       DownloadProgress progress) override {
        m_folder.calls.append(name);
        if (m_folder.onDownload) {
            m_folder.onDownload(name);
        }
        RemoteFolder::File& remote = m_folder.files.at(name);
        if (remote.failures-- > 0) {
            throw FTPError(FTPError::Case::readError);
        }
        const QByteArray bytes = remote.sent.isEmpty() ? remote.bytes : remote.sent;
        QFile file(target.path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        progress(bytes.size());
        co_return Download{.bytes = bytes.size(), .failure = {}};
    }
    QCoro::Task<ConnectionResult> testConnection() override { co_return {}; }
    QCoro::Task<qint64> fileSize(QString) override { co_return 0; }
    QCoro::Task<Stability> waitForFileStable(QString name, std::chrono::milliseconds,
                                             std::chrono::milliseconds) override {
        co_return {
            .isStable = m_folder.isStable, .hasChanged = false, .size = m_folder.files.at(name).bytes.size()};
    }
    QCoro::Task<bool> waitForBatchStable(QStringList names, std::chrono::milliseconds,
                                         std::chrono::milliseconds) override {
        m_folder.calls.append(QStringLiteral("wait for ") + names.join(u' '));
        co_return bool(m_folder.isStable);
    }

private:
    RemoteFolder& m_folder;
};

} // namespace ostrelle
