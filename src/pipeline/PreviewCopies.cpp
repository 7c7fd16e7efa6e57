// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/PreviewCopies.h"

#include "platform/Files.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

namespace ostrelle {

using namespace Qt::StringLiterals;

QString PreviewCopies::path(const QString& imagePath) const {
    return u"%1/%2_preview.jpg"_s.arg(m_folder, QFileInfo(imagePath).completeBaseName());
}

void PreviewCopies::save(const QByteArray& jpeg, const QString& imagePath) const {
    makeFolder(m_folder);
    replaceFile(path(imagePath), jpeg);
}

void PreviewCopies::forget(const QDateTime& before) const {
    QDirIterator copies(m_folder, {u"*_preview.jpg"_s}, QDir::Files | QDir::Hidden);
    while (copies.hasNext()) {
        copies.next();
        if (copies.fileInfo().lastModified() < before) {
            QFile::remove(copies.filePath());
        }
    }
}

} // namespace ostrelle
