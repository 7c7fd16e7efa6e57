// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/JsonDefaultsStore.h"
#include "support/Await.h"
#include "support/RecordingLog.h"
#include "support/Unprivileged.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>

namespace ostrelle {

inline void setMode(const QString& path, mode_t mode) {
    EXPECT_EQ(::chmod(QFile::encodeName(path).constData(), mode), 0);
}

inline QByteArray contentsOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

/// A store over a file in a folder of its own, by a user who is not root.
class JsonDefaultsStoreTest : public testing::Test {
protected:
    void writeFile(const QByteArray& bytes) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    QStringList files(const QString& pattern = QStringLiteral("*")) const {
        return QDir(folder.path())
            .entryList({pattern}, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
    }
    QVariant afterRestart(const QString& key) { return JsonDefaultsStore(path, log).value(key); }

    UnprivilegedFolder folder;
    QString path = folder.filePath(QStringLiteral("settings.json"));
    RecordingLog log;
};

} // namespace ostrelle
