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

/// The contents of a file, and its stamp from just before the read, so that a change during the read shows.
struct StampedBytes {
    QByteArray bytes;
    FileStamp stamp;
};

/// As readFile().
StampedBytes readStampedFile(const QString& path, qint64 limit);

/// What a write may use. It copes without anything the file system lacks; forbid a feature only to see how a
/// file is written without it.
struct FileMeans {
    bool namelessFiles = true;   ///< O_TMPFILE
    bool hardLinks = true;       ///< also of nameless files, through /proc
    bool exclusiveRename = true; ///< RENAME_NOREPLACE
};

/// Replaces the file so that a kill, a failure or a full disk at any instant leaves either the old file or
/// the new one, whole: writes a temporary file beside it, flushes it to disk, checks that it reads back,
/// renames it over the path and flushes the folder. A symbolic link stays and its target is replaced. Keeps
/// mode, owner, extended attributes and access list of an existing file as far as the process may set them; a
/// new file gets `newFileMode` less the umask. Throws FileError; after EIO, ENOSPC or EDQUOT the new file may
/// be in place but might not survive a power cut.
void replaceFile(const QString& path, const QByteArray& bytes, mode_t newFileMode = 0666,
                 const FileMeans& means = {});

/// Blocks the thread for that long.
using Pause = std::function<void(std::chrono::milliseconds)>;
void pauseThread(std::chrono::milliseconds span);

/// Makes a file's new bytes from the old ones.
using FileEdit = std::function<QByteArray(const QByteArray& bytes)>;
/// The same for an edit that depends on which file was read.
using StampedFileEdit = std::function<QByteArray(const StampedBytes& file)>;

/// Replaces an existing file with what `edit` makes of it, as safely as replaceFile(). If another program
/// writes the file meanwhile, it is read and edited again, in three attempts at most; a file that changes
/// every time is left alone and throws FileError with EBUSY. Exceptions of `edit` are handled as in
/// readSettled(), so a file in the middle of being written does not fail. Throws FileError, with EFBIG for a
/// file larger than `limit` bytes. Waits at most a quarter of a second, with `pause`. Returns the stamp of
/// the new file as put in place.
FileStamp editFile(const QString& path, qint64 limit, const FileEdit& edit, const Pause& pause = pauseThread);
FileStamp editFile(const QString& path, qint64 limit, const StampedFileEdit& edit,
                   const Pause& pause = pauseThread);
/// The same with one more condition, checked just before the rename: while it is false, the file is read and
/// edited again.
FileStamp editFile(const QString& path, qint64 limit, const FileEdit& edit,
                   const std::function<bool()>& isStillWanted);

/// Writes a new file as safely as replaceFile(). False when the file now exists, which leaves it alone. A
/// kill can leave an empty file only where the file system has none of the means. Throws FileError.
bool createFile(const QString& path, const QByteArray& bytes, const FileMeans& means = {});

/// Makes what was written to the file survive a power cut. Throws FileError.
void flushFile(const QString& path);

/// Flushes a file to disk, puts it over the path in the same folder and flushes the folder, so that a kill or
/// a power cut leaves either the old file or the new one, whole. Throws FileError.
void moveIntoPlace(const QString& file, const QString& path);

/// Sets the file's modification time to now. Throws FileError.
void touchFile(const QString& path);

/// Makes the folder and its parents. Throws FileError.
void makeFolder(const QString& path);

} // namespace ostrelle
