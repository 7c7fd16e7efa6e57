// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/FolderRights.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// As `ls -l` writes it, without the type.
QString modeWords(mode_t mode) {
    constexpr QStringView letters = u"rwxrwxrwx";
    QString words;
    for (int bit = 0; bit < letters.size(); ++bit) {
        words += (mode >> (letters.size() - 1 - bit)) & 1 ? letters[bit] : QChar(u'-');
    }
    return words;
}

bool isReadOnlyDisk(const QByteArray& path) {
    struct statvfs disk{};
    return ::statvfs(path.constData(), &disk) == 0 && (disk.f_flag & ST_RDONLY) != 0;
}

} // namespace

QString folderRights(const QString& folder) {
    const QByteArray path = QFile::encodeName(folder);
    struct stat status{};
    if (::stat(path.constData(), &status) != 0) {
        return u"The folder is not there."_s;
    }
    if (isReadOnlyDisk(path)) {
        return u"The disk that holds the folder is read-only."_s;
    }
    const QString name = QFileInfo(folder).owner();
    const QString owner = name.isEmpty() ? QString::number(status.st_uid) : name;
    const bool isWritable = ::faccessat(AT_FDCWD, path.constData(), W_OK, AT_EACCESS) == 0;
    return u"The folder belongs to %1 (%2); you may %3."_s.arg(
        owner, modeWords(status.st_mode),
        isWritable ? u"write into it, but not into the file"_s : u"not write into it"_s);
}

} // namespace ostrelle
