// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Overtaking.h"
#include "platform/PlainLog.h"
#include "state/ProcessedFilesManifest.h"
#include "state/StatusStore.h"
#include "transfer/ftp/FileTransferClient.h"
#include "transfer/remote/DestinationFolder.h"
#include "transfer/remote/FetchDecision.h"
#include "transfer/remote/FetchLedger.h"
#include "transfer/remote/FetchListener.h"
#include "transfer/remote/FetchedImages.h"

#include <QCoroTask>
#include <QList>
#include <QString>
#include <QStringList>
#include <exception>
#include <optional>

namespace ostrelle {

/// The files that one poll or full download fetches.
struct FetchPlan {
    QList<FTPFileInfo> metadata;
    QList<FTPFileInfo> images;

    bool isEmpty() const { return metadata.isEmpty() && images.isEmpty(); }
    qint64 count() const { return metadata.size() + images.size(); }
};

/// Takes out the images whose sidecars have failed to come for the first time. Without them they would be
/// captioned without what the photographer has noted; those that fail again are not waited for.
void leaveForSidecars(const QList<FTPFileInfo>& sidecars, const FetchLedger& ledger,
                      QList<FTPFileInfo>* images);

/// What a run of fetches works with. All of it must outlive the run.
struct FetchParts {
    FileTransferClient& client;
    DestinationFolder& destination;
    FetchLedger& ledger;
    FetchedImages& fetched;
    ProcessedFilesManifest& manifest;
    StatusStore& status;
    PlainLog& log;
    const FetchListener& listener;

    IsCaptioned isCaptioned() const {
        return [known = &manifest](const QString& name) { return known->isProcessedByName(name); };
    }
};

/// Fetches files one after the other, sidecars first, and shows how far it is. A file is fetched under a
/// hidden name and takes its place once it is whole. Lives on the coroutine frame that executes it.
class FetchRun {
public:
    /// How an image is looked at again just before it is fetched.
    enum class Care {
        poll,     ///< a captioned one is left alone, and one that may still grow is waited for
        download, ///< only its size counts
    };

    /// Begins no further file once `mark` is overtaken, and shows nothing more.
    FetchRun(FetchParts parts, FetchPlan plan, Care care, Overtaking::Mark mark);

    /// Shows what is about to be fetched.
    void announce();
    /// Fetches all files, sidecars with the sizes of the listing. A file that fails is set aside. When three
    /// have failed in a row, ends early if the disk is to blame, and throws if the server is.
    QCoro::Task<> execute();
    /// Shows what was fetched; `images` are to be captioned. `problem` is a sentence to go beneath, or empty.
    void conclude(qsizetype images, bool isServerEmpty, const QString& problem);

private:
    QCoro::Task<> fetchAll(QList<FTPFileInfo> files);
    /// Fetches a file while the one before it is still being put in its place.
    QCoro::Task<> fetch(FTPFileInfo file);
    /// False if the file is left for a later poll.
    QCoro::Task<bool> fetchPart(FTPFileInfo* file, QString part);
    /// False if the image is left for a later poll.
    QCoro::Task<bool> isReady(FTPFileInfo* file);
    /// Puts a file that has come in its place.
    QCoro::Task<> settle(FTPFileInfo file, QString part);
    QCoro::Task<> settled();
    /// False if a caption has been written meanwhile to the file in whose place it would come.
    QCoro::Task<bool> place(FTPFileInfo file, QString part);
    void fail(const FTPFileInfo& file, const std::exception_ptr& failure);
    void count(const FTPFileInfo& file);
    void showProgress(qint64 bytes);
    void showNumber();
    QString planned() const;
    void print(const QString& words) { m_parts.log.print(QStringLiteral("[FTPWatcher] ") + words); }

    FetchParts m_parts;
    FetchPlan m_plan;
    Care m_care;
    Overtaking::Mark m_mark;
    qint64 m_bytesPlanned = 0;
    qint64 m_bytesDone = 0;
    qint64 m_number = 0; ///< of the file under way, from 1
    qint64 m_metadataDone = 0;
    int m_failuresInARow = 0;
    bool m_isDiskInTrouble = false;          ///< ends the run
    std::optional<QCoro::Task<>> m_settling; ///< of the file before
    QStringList m_failed;
    QStringList m_images;
};

} // namespace ostrelle
