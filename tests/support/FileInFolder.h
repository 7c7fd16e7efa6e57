// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QTemporaryDir>
#include <utility>

namespace ostrelle {

/// A file in a folder of its own, for one test.
class FileInFolder {
public:
    FileInFolder(QString name, const QByteArray& bytes) : m_name(std::move(name)) { write(bytes); }

    QString path() const { return m_folder.filePath(m_name); }
    QString folder() const { return m_folder.path(); }
    QByteArray bytes() const {
        QFile file(path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void write(const QByteArray& bytes) {
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

private:
    QTemporaryDir m_folder;
    QString m_name;
};

} // namespace ostrelle
