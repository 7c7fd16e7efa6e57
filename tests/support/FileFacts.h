// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

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

/// The names of everything in a folder that matches the pattern, hidden or not.
inline QStringList filesIn(const QString& folder, const QString& pattern = QStringLiteral("*")) {
    return QDir(folder).entryList({pattern},
                                  QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
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
