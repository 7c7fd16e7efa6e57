// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sys/types.h>

#include <QByteArray>
#include <QString>
#include <functional>

namespace ostrelle {

/// Reads a whole file. Throws FileError, with EFBIG when it is larger than `limit` bytes.
QByteArray readFile(const QString& path, qint64 limit);

/// Puts the bytes in the file's place so that a killed process, a failure or a full disk at any instant
/// leaves the old file or the new one, whole: writes a temporary file beside it, flushes it to disk,
/// checks that it reads back and renames it over the path. A symbolic link stays and its target is
/// replaced. Mode, owner, extended attributes and access list of an existing file are kept as far as the
/// process may set them; a new file gets `newFileMode`, less the umask. Throws FileError.
void replaceFile(const QString& path, const QByteArray& bytes, mode_t newFileMode = 0666);

/// Makes a file's new bytes from those that were read.
using FileEdit = std::function<QByteArray(const QByteArray& bytes)>;

/// Puts what `edit` makes of an existing file in its place, as safely as replaceFile(). What another program
/// writes there meanwhile is not lost but read and edited in turn, in three attempts at most; a file that
/// changes each time stays as that program left it and is a FileError with EBUSY. Throws FileError, with
/// EFBIG for a file larger than `limit` bytes, and what `edit` throws.
void editFile(const QString& path, qint64 limit, const FileEdit& edit);

/// Writes a new file as safely as replaceFile(). False when there is a file by now, which stays as it is.
/// Throws FileError.
bool createFile(const QString& path, const QByteArray& bytes);

/// Sets the file's modification time to now. Throws FileError.
void touchFile(const QString& path);

/// Makes the folder and its parents. Throws FileError.
void makeFolder(const QString& path);

} // namespace ostrelle
