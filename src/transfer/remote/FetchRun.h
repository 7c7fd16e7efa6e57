// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Overtaking.h"
#include "transfer/remote/FetchParts.h"
#include "transfer/remote/FetchPlan.h"

#include <QCoroTask>
#include <QString>
#include <QStringList>
#include <exception>
#include <optional>

namespace ostrelle {

/// Fetches files one after the other, sidecars first, and shows how far it is. A file is fetched under a
/// hidden name and takes its place once it is whole. Lives on the coroutine frame that executes it.
class FetchRun {
public:
    /// Begins no further file once `mark` is overtaken, and shows nothing more.
    FetchRun(FetchParts parts, FetchPlan plan, FetchCare care, Overtaking::Mark mark);

    /// Shows what is about to be fetched.
    void announce();
    /// Fetches all files, sidecars with the sizes of the listing. A file that fails is set aside. When three
    /// have failed in a row, ends early if the disk is to blame, and throws if the server is.
    QCoro::Task<> execute();
    /// Shows what was fetched; `images` are to be captioned.
    void conclude(qsizetype images, bool isServerEmpty);
    /// Which files could not be fetched, a sentence; empty if there are none.
    QString failureRemark() const;

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
    /// Sets the file aside.
    void leave(const FTPFileInfo& file, const QString& reason);
    void fail(const FTPFileInfo& file, const std::exception_ptr& failure);
    void count(const FTPFileInfo& file);
    void showProgress(qint64 bytes);
    void showNumber();
    QString planned() const;
    void print(const QString& words) { m_parts.log.print(QStringLiteral("[FTPWatcher] ") + words); }

    FetchParts m_parts;
    FetchPlan m_plan;
    FetchCare m_care;
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
