// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"
#include "platform/PlainLog.h"
#include "transfer/ftp/FileTransferClient.h"

namespace ostrelle {

/// The size of the file in its folder's listing. Throws FTPError::fileNotFound.
qint64 sizeInListing(const QList<FTPFileInfo>& listing, const QString& name);

/// Waits for uploads to end, which a server does not tell: a file counts as whole when its size in repeated
/// listings stays the same. One listing tells the sizes of all files of a batch.
class StabilityWait {
public:
    /// `component` begins each log line, in brackets. The references must outlive the tasks.
    StabilityWait(FileTransferClient& client, Clock& clock, PlainLog& log, QString component);

    /// Two sightings of the same size are enough, and three once the file has changed. A file of some size
    /// counts as stable when the time is over. Throws what listFiles() throws.
    QCoro::Task<Stability> waitForFile(QString name, std::chrono::milliseconds checkInterval,
                                       std::chrono::milliseconds timeout);
    /// Three sightings in a row are needed. When the time is over, it is enough that each file has some size.
    QCoro::Task<bool> waitForBatch(QStringList names, std::chrono::milliseconds checkInterval,
                                   std::chrono::milliseconds timeout);

private:
    QCoro::Task<bool> haveSomeSize(QStringList names);
    void print(const QString& words);

    FileTransferClient& m_client;
    Clock& m_clock;
    PlainLog& m_log;
    QString m_component;
};

} // namespace ostrelle
