// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/EditConditions.h"

#include "metadata/facts/ImageKind.h"
#include "metadata/sidecar/SidecarPath.h"
#include "platform/FileError.h"
#include "platform/WriteCheck.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <cerrno>

namespace ostrelle {

namespace {

bool isWritable(const QString& path) {
    return ::faccessat(AT_FDCWD, QFile::encodeName(path).constData(), W_OK, AT_EACCESS) == 0;
}

bool hasRoomFor(const QString& path) {
    try {
        requireReplaceable(path);
    } catch (const FileError& error) {
        return error.code() != ENOSPC;
    }
    return true;
}

} // namespace

EditConditions EditConditions::of(const QString& image) {
    const QString edited = isJpegImage(image) ? image : findSidecar(image);
    const QString folder = QFileInfo(edited).path();
    EditConditions conditions;
    conditions.image = FileStamp::at(image);
    conditions.sidecar = edited == image ? std::nullopt : FileStamp::at(edited);
    struct stat status{};
    if (::stat(QFile::encodeName(folder).constData(), &status) == 0) {
        conditions.folderDevice = status.st_dev;
        conditions.folderNumber = status.st_ino;
        conditions.folderMode = status.st_mode;
    }
    conditions.isFolderWritable = isWritable(folder);
    conditions.isFileWritable = isWritable(edited);
    conditions.hasRoom = hasRoomFor(edited);
    return conditions;
}

} // namespace ostrelle
