// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/FileStamp.h"

#include <QFile>

namespace ostrelle {

FileStamp::FileStamp(const struct stat& status)
    : device(status.st_dev)
    , number(status.st_ino)
    , size(status.st_size)
    , contentChanged(status.st_mtim.tv_sec, status.st_mtim.tv_nsec)
    , recordChanged(status.st_ctim.tv_sec, status.st_ctim.tv_nsec) {}

std::optional<FileStamp> FileStamp::at(const QString& path) {
    struct stat status{};
    const bool isThere = ::stat(QFile::encodeName(path).constData(), &status) == 0;
    return isThere ? std::optional(FileStamp(status)) : std::nullopt;
}

} // namespace ostrelle
