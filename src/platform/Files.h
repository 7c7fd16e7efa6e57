// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/FileStamp.h"

#include <sys/types.h>

#include <QByteArray>
#include <QString>
#include <chrono>
#include <functional>

namespace ostrelle {

/// Reads a whole file. Throws FileError, with EFBIG when it is larger than `limit` bytes.
QByteArray readFile(const QString& path, qint64 limit);

/// What a file held, and what it looked like right before it was read: a change during the reading shows too.
struct StampedBytes {
    QByteArray bytes;
    FileStamp stamp;
};

/// As readFile().
StampedBytes readStampedFile(const QString& path, qint64 limit);

/// What a write makes use of. It does without what the file system lacks; only who wants to see how a file is
/// written then forbids it.
struct FileMeans {
    bool namelessFiles = true;   ///< O_TMPFILE
    bool hardLinks = true;       ///< of nameless files through /proc, too
    bool exclusiveRename = true; ///< RENAME_NOREPLACE
};

/// Puts the bytes in the file's place so that a killed process, a failure or a full disk at any instant
/// leaves the old file or the new one, whole: writes a temporary file beside it, flushes it to disk,
/// checks that it reads back, renames it over the path and flushes the folder. A symbolic link stays and its
/// target is replaced. Mode, owner, extended attributes and access list of an existing file are kept as far
/// as the process may set them; a new file gets `newFileMode`, less the umask. Throws FileError; with EIO,
/// ENOSPC or EDQUOT the new file may be there all the same, but might not outlive a power cut.
void replaceFile(const QString& path, const QByteArray& bytes, mode_t newFileMode = 0666,
                 const FileMeans& means = {});

/// Lets the thread wait.
using Pause = std::function<void(std::chrono::milliseconds)>;
void pauseThread(std::chrono::milliseconds span);

/// Makes a file's new bytes from those that were read.
using FileEdit = std::function<QByteArray(const QByteArray& bytes)>;
/// The same for an edit that depends on which file was read.
using StampedFileEdit = std::function<QByteArray(const StampedBytes& file)>;

/// Puts what `edit` makes of an existing file in its place, as safely as replaceFile(). What another program
/// writes there meanwhile is not lost but read and edited in turn, in three attempts at most; a file that
/// changes each time stays as that program left it and is a FileError with EBUSY. What `edit` throws goes out
/// as readSettled() tells: a file that is just being written does not fail. Throws FileError, with EFBIG for
/// a file larger than `limit` bytes. Waits a quarter of a second at most, with `pause`. Returns what the new
/// file looked like when it was put there.
FileStamp editFile(const QString& path, qint64 limit, const FileEdit& edit, const Pause& pause = pauseThread);
FileStamp editFile(const QString& path, qint64 limit, const StampedFileEdit& edit,
                   const Pause& pause = pauseThread);
/// The same, with one more condition that is looked at when nothing but the rename is left: while it is
/// false, the file is read and edited anew.
FileStamp editFile(const QString& path, qint64 limit, const FileEdit& edit,
                   const std::function<bool()>& isStillWanted);

/// Writes a new file as safely as replaceFile(). False when there is a file by now, which stays as it is.
/// Only where the file system has none of the means, a kill can leave an empty file. Throws FileError.
bool createFile(const QString& path, const QByteArray& bytes, const FileMeans& means = {});

/// Sets the file's modification time to now. Throws FileError.
void touchFile(const QString& path);

/// Makes the folder and its parents. Throws FileError.
void makeFolder(const QString& path);

} // namespace ostrelle
