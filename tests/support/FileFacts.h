// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QStringList>

namespace ostrelle {

/// The bytes of a file; none if it does not exist.
inline QByteArray contentsOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Writes in place, as another program may.
inline void writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
}

/// The names of all that is in a folder, hidden or not.
inline QStringList filesIn(const QString& folder, const QString& pattern = QStringLiteral("*")) {
    return QDir(folder).entryList({pattern},
                                  QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

/// Sets when the file, or the link itself, was changed last.
inline void setDate(const QString& path, timespec date) {
    const timespec times[] = {date, date};
    EXPECT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, AT_SYMLINK_NOFOLLOW), 0);
}

inline mode_t modeOf(const QString& path) {
    struct stat status{};
    EXPECT_EQ(::stat(QFile::encodeName(path).constData(), &status), 0);
    return status.st_mode & 07777U;
}

inline void setMode(const QString& path, mode_t mode) {
    EXPECT_EQ(::chmod(QFile::encodeName(path).constData(), mode), 0);
}

} // namespace ostrelle
