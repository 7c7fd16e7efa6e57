// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/remote/FetchRun.h"

#include "core/Attempt.h"
#include "core/Text.h"
#include "metadata/facts/ImageKind.h"
#include "transfer/ftp/FTPError.h"

#include <QFileInfo>
#include <chrono>
#include <limits>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

qint64 total(const QList<FTPFileInfo>& files, qint64 sum) {
    for (const FTPFileInfo& file : files) { // a hostile listing must not overflow it
        sum += std::min(std::max<qint64>(file.size, 0), std::numeric_limits<qint64>::max() - sum);
    }
    return sum;
}

QString counted(qsizetype count, const QString& what) {
    return u"%1 new %2 file%3"_s.arg(QString::number(count), what, plural(count));
}

constexpr int mostFailuresInARow = 3;

QString reasonOf(const std::exception_ptr& failure) {
    const auto error = failureAs<FTPError>(failure);
    return error && !error->reason().isEmpty() ? error->reason() : wordsOf(failure);
}

} // namespace

FetchRun::FetchRun(FetchParts parts, FetchPlan plan, FetchCare care, Overtaking::Mark mark)
    : m_parts(std::move(parts))
    , m_plan(std::move(plan))
    , m_care(care)
    , m_mark(mark)
    , m_bytesPlanned(total(m_plan.images, total(m_plan.metadata, 0))) {}

QString FetchRun::planned() const {
    const QString images = counted(m_plan.images.size(), u"image"_s);
    const QString metadata = counted(m_plan.metadata.size(), u"metadata"_s);
    return m_plan.images.isEmpty()     ? metadata
           : m_plan.metadata.isEmpty() ? images
                                       : images + u" and "_s + metadata;
}

void FetchRun::announce() {
    StatusStore& status = m_parts.status;
    status.setFtpIsDownloading(true);
    status.setFtpTotalBytesToDownload(m_bytesPlanned);
    status.setFtpBytesDownloaded(0);
    status.setFtpDownloadProgress(0);
    if (m_plan.isEmpty()) {
        status.setFtpStatusMessage(u"No new files"_s);
    } else {
        showNumber();
    }
}

void FetchRun::showNumber() {
    if (!m_mark.isOvertaken()) {
        m_parts.status.setFtpStatusMessage(
            u"Found %1. Downloading %2/%3..."_s.arg(planned()).arg(m_number).arg(m_plan.count()));
    }
}

QCoro::Task<> FetchRun::execute() {
    m_parts.status.setFtpTotalBytesToDownload(m_bytesPlanned); // files may have grown since announce()
    co_await fetchAll(m_plan.metadata);
    if (m_care == FetchCare::poll) {
        leaveForSidecars(m_plan.metadata, m_parts.ledger, &m_plan.images);
    }
    co_await fetchAll(m_plan.images);
}

QCoro::Task<> FetchRun::fetchAll(QList<FTPFileInfo> files) {
    for (const FTPFileInfo& file : std::as_const(files)) {
        if (m_mark.isOvertaken() || m_isDiskInTrouble) {
            break;
        }
        co_await fetch(file);
        if (m_failuresInARow >= mostFailuresInARow) {
            co_await settled();
            co_await m_parts.client
                .listFiles(); // throws if it is the server that is gone, and not these files
            m_failuresInARow = 0;
        }
    }
    co_await settled();
}

QCoro::Task<> FetchRun::fetch(FTPFileInfo file) {
    ++m_number;
    print((isSupportedImage(file.name) ? u"Downloading file: "_s : u"Downloading metadata file: "_s) +
          file.name);
    showNumber();
    const QString part = m_parts.destination.temporaryPath(file.name);
    const auto come = co_await attempt(fetchPart(&file, part));
    co_await settled();
    if (come && *come) {
        m_bytesDone += file.size;
        m_settling = settle(file, part);
    } else if (!come) {
        co_await m_parts.destination.discard(part);
        fail(file, come.failure());
    }
}

QCoro::Task<> FetchRun::settled() {
    if (m_settling) {
        co_await *m_settling;
        m_settling.reset();
    }
}

QCoro::Task<> FetchRun::settle(FTPFileInfo file, QString part) {
    const auto placed = co_await attempt(place(file, part));
    if (!placed.valueOr(false)) {
        co_await m_parts.destination.discard(part);
    }
    if (!placed) {
        fail(file, placed.failure());
    } else if (*placed) {
        count(file);
    }
}

void FetchRun::leave(const FTPFileInfo& file, const QString& reason) {
    print(u"Could not fetch %1: %2"_s.arg(file.name, reason));
    if (m_mark.isOvertaken()) {
        return; // it was stopped
    }
    m_parts.ledger.setAside(file);
    m_failed.append(file.name);
    m_parts.listener.ended({.path = m_parts.destination.pathOf(file.name), .failure = reason});
}

void FetchRun::fail(const FTPFileInfo& file, const std::exception_ptr& failure) {
    leave(file, reasonOf(failure));
    const auto error = failureAs<FTPError>(failure);
    const bool isOfServer = error && error->kind() != FTPError::Case::cannotCreateFile;
    m_isDiskInTrouble = ++m_failuresInARow >= mostFailuresInARow && !isOfServer;
}

/// Files may have changed during the wait for the batch.
QCoro::Task<bool> FetchRun::isReady(FTPFileInfo* file) {
    using std::chrono::seconds;
    const LocalCopy copy = co_await m_parts.destination.copyOf(file->name);
    const FetchDecision decision = m_care == FetchCare::poll
                                       ? decideOnImage(*file, copy, m_parts.isCaptioned(), Look::again)
                                       : decideBySize(*file, copy, Look::again);
    for (const QString& line : decision.lines) {
        m_parts.log.print(line);
    }
    if (!decision.isFetched) {
        co_return false;
    }
    if (m_care == FetchCare::poll) {
        const Stability stability =
            co_await m_parts.client.waitForFileStable(file->name, seconds(2), seconds(30));
        if (!stability.isStable) {
            print(u"File %1 did not stabilize, skipping"_s.arg(file->name));
            co_return false;
        }
        file->size = stability.size;
    }
    co_return !m_mark.isOvertaken();
}

QCoro::Task<bool> FetchRun::fetchPart(FTPFileInfo* file, QString part) {
    const bool ready = !isSupportedImage(file->name) || co_await isReady(file);
    if (!ready) {
        co_return false;
    }
    m_parts.listener.begun(file->name);
    const DownloadTarget target{.path = part, .isSecurityScoped = true, .expectedSize = file->size};
    const Download done = co_await m_parts.client.downloadFile(file->name, target,
                                                               [this](qint64 bytes) { showProgress(bytes); });
    if (!done.failure.isEmpty() || done.bytes != file->size) {
        throw FTPError(FTPError::Case::readError,
                       !done.failure.isEmpty()
                           ? done.failure
                           : u"Only %1 of %2 bytes arrived."_s.arg(done.bytes).arg(file->size));
    }
    co_return true;
}

/// A caption may have been written while the file came, or be about to be written now.
QCoro::Task<bool> FetchRun::place(FTPFileInfo file, QString part) {
    DestinationFolder& destination = m_parts.destination;
    const auto claims = co_await destination.claim(file.name);
    if (!claims) {
        leave(file, u"Its image is being captioned at the moment."_s);
        co_return false;
    }
    const bool isImage = isSupportedImage(file.name);
    if (m_care == FetchCare::poll) {
        co_await m_parts.manifest.refresh();
        const LocalCopy copy = co_await destination.copyOf(file.name);
        const FetchDecision decision = isImage ? decideOnImage(file, copy, m_parts.isCaptioned(), Look::first)
                                               : decideOnMetadata(file, copy, m_parts.isCaptioned());
        for (const QString& line : decision.lines) {
            m_parts.log.print(line);
        }
        if (!decision.isFetched) {
            co_return false;
        }
    }
    if (isImage) {
        co_await m_parts.fetched.add(destination.pathOf(file.name)); // first: a kill may come in between
    }
    using OldFile = DestinationFolder::OldFile;
    const bool isCaptionPossible = m_care == FetchCare::download || !isImage;
    co_await destination.bringIn(part, file.name, isCaptionPossible ? OldFile::kept : OldFile::replaced);
    m_parts.ledger.takeBack(destination.pathOf(file.name));
    co_return true;
}

void FetchRun::showProgress(qint64 bytes) {
    if (m_mark.isOvertaken()) {
        return;
    }
    const qint64 sum = m_bytesDone + bytes; // of the files before it, which are all here
    m_parts.status.setFtpBytesDownloaded(sum);
    if (m_bytesPlanned >= 1) {
        m_parts.status.setFtpDownloadProgress(static_cast<double>(sum) / static_cast<double>(m_bytesPlanned));
    }
}

void FetchRun::count(const FTPFileInfo& file) {
    const QString path = m_parts.destination.pathOf(file.name);
    m_failuresInARow = 0;
    if (isSupportedImage(file.name)) {
        print(u"Downloaded %1 to %2"_s.arg(file.name, path));
        m_images.append(path);
    } else {
        print(u"Downloaded metadata file %1 to %2"_s.arg(file.name, path));
        ++m_metadataDone;
    }
    m_parts.listener.ended({.path = path, .bytes = file.size, .failure = {}});
    if (m_mark.isOvertaken()) {
        return;
    }
    StatusStore& status = m_parts.status;
    status.setFtpFilesDownloaded(m_metadataDone + m_images.size());
    status.setFtpMetadataDownloaded(m_metadataDone);
    status.setFtpImagesDownloaded(m_images.size());
}

void FetchRun::conclude(qsizetype images, bool isServerEmpty) {
    StatusStore& status = m_parts.status;
    if (m_bytesPlanned >= 1 && m_bytesDone >= m_bytesPlanned) {
        status.setFtpDownloadProgress(1.0);
    }
    if (images > 0) {
        const QString metadata = m_plan.metadata.isEmpty()
                                     ? QString()
                                     : u" and "_s + counted(m_plan.metadata.size(), u"metadata"_s);
        const QString praise = m_failed.isEmpty() ? u" All caught up!"_s : QString();
        status.setFtpStatusMessage(
            u"Downloaded %1%2.%3"_s.arg(counted(images, u"image"_s), metadata, praise));
    } else {
        status.setFtpStatusMessage(isServerEmpty ? u"Directory is empty"_s : u"No new files"_s);
    }
}

QString FetchRun::failureRemark() const {
    const QString outlook = m_care == FetchCare::poll ? u", will try again"_s : QString();
    return m_failed.isEmpty() ? QString() : u"Could not fetch %1%2."_s.arg(shortNameList(m_failed), outlook);
}

} // namespace ostrelle
