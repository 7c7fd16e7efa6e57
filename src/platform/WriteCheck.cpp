// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/WriteCheck.h"

#include "platform/FileError.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <cstdint>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Room for grown metadata and the file system's own records.
constexpr std::uint64_t reserve = 256 << 10;

bool isWritable(const QByteArray& path) {
    return ::faccessat(AT_FDCWD, path.constData(), W_OK, AT_EACCESS) == 0;
}

/// In a sticky folder such as /tmp, only a file's owner may rename another file over it.
bool isKeptByOwner(const struct stat& file, const QByteArray& folder) {
    struct stat status{};
    return ::stat(folder.constData(), &status) == 0 && (status.st_mode & S_ISVTX) != 0 && ::geteuid() != 0 &&
           ::geteuid() != status.st_uid && ::geteuid() != file.st_uid;
}

/// Also true where the file system does not report its free space.
bool hasRoom(const QByteArray& folder, std::uint64_t bytes) {
    struct statvfs room{};
    return ::statvfs(folder.constData(), &room) != 0 || room.f_blocks == 0 ||
           std::uint64_t{room.f_bavail} * room.f_frsize >= bytes;
}

} // namespace

void requireReplaceable(const QString& path) {
    const QFileInfo file(path);
    const QString target = file.isSymLink() ? file.symLinkTarget() : path;
    const QByteArray name = QFile::encodeName(target);
    const QByteArray folder = QFile::encodeName(QFileInfo(target).path());
    struct stat status{};
    if (::stat(name.constData(), &status) != 0 || !isWritable(name) || !isWritable(folder)) {
        throw FileError(u"write"_s, path, errno);
    }
    if (isKeptByOwner(status, folder)) {
        throw FileError(u"write"_s, path, EPERM);
    }
    if (!hasRoom(folder, static_cast<std::uint64_t>(status.st_size) + reserve)) {
        throw FileError(u"write"_s, path, ENOSPC);
    }
}

} // namespace ostrelle
