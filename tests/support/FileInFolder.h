// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/FileFacts.h"

#include <QTemporaryDir>
#include <utility>

namespace ostrelle {

/// A file in a folder of its own, for one test.
class FileInFolder {
public:
    FileInFolder(QString name, const QByteArray& bytes) : m_name(std::move(name)) { write(bytes); }

    QString path() const { return m_folder.filePath(m_name); }
    QString folder() const { return m_folder.path(); }
    QByteArray bytes() const { return contentsOf(path()); }
    void write(const QByteArray& bytes) { writeFile(path(), bytes); }

private:
    QTemporaryDir m_folder;
    QString m_name;
};

} // namespace ostrelle
