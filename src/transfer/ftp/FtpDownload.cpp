// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ftp/FtpDownload.h"

#include "core/Attempt.h"
#include "pipeline/FolderWork.h"
#include "transfer/ftp/FTPError.h"

#include <sys/file.h>

#include <QDir>
#include <QFileInfo>
#include <chrono>
#include <optional>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;
using Pass = StreamReader::Pass;

namespace {

/// How much is written to the disk at a time, in bytes.
constexpr qsizetype savedAtOnce = 1 << 20;

QString word(bool value) {
    return value ? u"true"_s : u"false"_s;
}

void say(PlainLog& log, const QString& words) {
    log.print(u"[FTPClient] "_s + words);
}

/// Makes the folder and the empty file, and opens it. Throws FTPError::cannotCreateFile.
void create(QFile& file, PlainLog& log) {
    const QString path = file.fileName();
    const QString folder = QFileInfo(path).path();
    if (!QFileInfo::exists(folder)) {
        if (!QDir().mkpath(folder)) {
            say(log, u"Failed to create destination directory: "_s + qt_error_string());
            throw FTPError(FTPError::Case::cannotCreateFile, qt_error_string());
        }
        say(log, u"Created destination directory: "_s + folder);
    }
    const bool isWritable = QFileInfo(folder).isWritable();
    say(log, u"Directory writable: "_s + word(isWritable));
    if (!isWritable) {
        say(log, u"Directory is not writable. This may be a permissions issue."_s);
    }
    if (QFileInfo::exists(path)) {
        const bool isRemoved = QFile::remove(path);
        say(log, isRemoved ? u"Removed existing file: "_s + path
                           : u"Failed to remove existing file: "_s + qt_error_string());
    }
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        say(log, u"Failed to create file at: "_s + path);
        say(log, u"Directory exists: "_s + word(QFileInfo::exists(folder)));
        say(log, u"Directory writable: "_s + word(isWritable));
        throw FTPError(FTPError::Case::cannotCreateFile, file.errorString());
    }
    ::flock(file.handle(), LOCK_EX | LOCK_NB); // another program takes it for abandoned otherwise
}

/// Throws FTPError::cannotCreateFile.
void write(QFile& file, const QByteArray& bytes) {
    const qint64 written = file.write(bytes);
    if (written != bytes.size()) {
        throw FTPError(FTPError::Case::cannotCreateFile,
                       written < 0 ? file.errorString() : u"The disk is full."_s);
    }
}

} // namespace

FtpDownload::FtpDownload(const FtpParts& parts, FtpAddress address, DownloadTarget target,
                         DownloadProgress progress)
    : m_parts(parts)
    , m_target(std::move(target))
    , m_progress(std::move(progress))
    , m_reader(parts, std::move(address))
    , m_file(std::make_shared<QFile>(m_target.path))
    , m_atDisk(std::make_shared<QByteArray>()) {
    // Kept for the whole file: new memory for each piece would cost more than the transfer.
    m_unsaved.reserve(savedAtOnce + StreamReader::mostBytes);
    m_atDisk->reserve(savedAtOnce + StreamReader::mostBytes);
}

QCoro::Task<Download> FtpDownload::execute() {
    m_reader.create();
    co_await m_reader.open();
    print(u"Connection established for download, starting read..."_s);
    std::optional<ScopedAccess> access;
    if (m_target.isSecurityScoped) {
        access.emplace(m_parts.access, QFileInfo(m_target.path).path());
        if (access->isGranted()) {
            print(u"Started security-scoped access for destination directory"_s);
        }
    }
    co_await createFile();
    const auto done = co_await attempt(readAll());
    if (!done) {
        co_await close();
        done.rethrow();
    }
    co_return m_result;
}

QCoro::Task<> FtpDownload::createFile() {
    auto work = [file = m_file](PlainLog& log) { create(*file, log); };
    co_await onThreadOf(m_parts.threads, m_target.path, m_parts.log, work);
    print(u"Starting to read file data..."_s);
}

QCoro::Task<> FtpDownload::readAll() {
    m_lastReport = m_parts.clock.now();
    Pass pass = Pass::nothing;
    while (pass != Pass::end && !hasEnough()) {
        pass = co_await m_reader.pass();
        const QByteArrayView bytes = m_reader.bytes();
        m_unsaved.append(bytes);
        m_result.bytes += bytes.size();
        if (m_unsaved.size() >= savedAtOnce) {
            co_await save();
        }
        if (m_lastReport.msecsTo(m_parts.clock.now()) >= 1000) {
            co_await report();
        }
    }
    if (m_result.failure.isEmpty()) {
        m_result.failure = m_reader.failure();
    }
    co_await saved();
    auto finish = [file = m_file, bytes = m_unsaved] {
        write(*file, bytes);
        const qint64 size = file->size();
        file->close();
        return size;
    };
    const qint64 size = co_await onThreadOf(m_parts.threads, m_target.path, finish);
    if (m_progress) {
        m_progress(m_result.bytes);
    }
    print(u"Download complete. Total bytes downloaded: "_s + QString::number(m_result.bytes));
    print(u"File size on disk: %1 bytes"_s.arg(size));
    if (size == 0) {
        print(u"ERROR: File was created but is empty!"_s);
        throw FTPError(FTPError::Case::readError,
                       m_result.failure.isEmpty() ? u"The server has sent nothing."_s : m_result.failure);
    }
}

bool FtpDownload::hasEnough() {
    constexpr int mostPasses = 10'000;
    constexpr std::chrono::seconds longestSilence{60};
    if (!m_target.expectedSize) {
        return m_reader.spentPasses() >= mostPasses;
    }
    if (m_result.bytes > *m_target.expectedSize) {
        m_result.failure = u"The file is longer than the server's listing says."_s;
        return true;
    }
    if (m_reader.silence() >= longestSilence) {
        m_result.failure = u"The server has sent nothing for a minute."_s;
        return true;
    }
    return false;
}

QCoro::Task<> FtpDownload::report() {
    co_await save();
    m_lastReport = m_parts.clock.now();
    if (m_progress) {
        m_progress(m_result.bytes);
    }
    print(u"Progress update: %1 bytes downloaded"_s.arg(m_result.bytes));
}

QCoro::Task<> FtpDownload::save() {
    co_await saved();
    if (m_unsaved.isEmpty()) {
        co_return;
    }
    m_atDisk->swap(m_unsaved);
    m_unsaved.resize(0); // keeps the memory
    auto writePiece = [file = m_file, bytes = m_atDisk] { write(*file, *bytes); };
    m_saving = onThreadOf(m_parts.threads, m_target.path, writePiece);
}

QCoro::Task<> FtpDownload::saved() {
    if (m_saving) {
        const QCoro::Task<> saving = *std::exchange(m_saving, std::nullopt);
        co_await saving;
        m_reader.restartSilence(); // the disk may have taken its time
    }
}

QCoro::Task<> FtpDownload::close() {
    auto close = [file = m_file] { file->close(); };
    co_await onThreadOf(m_parts.threads, m_target.path, close);
}

void FtpDownload::print(const QString& words) {
    say(m_parts.log, words);
}

} // namespace ostrelle
