// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Corpus.h"

#include <QDir>
#include <QFileInfo>

namespace ostrelle {

QStringList corpusFiles(const QString& kind) {
    if (QStringView(QStringLiteral(OSTRELLE_CORPUS)).isEmpty()) {
        return {};
    }
    const QDir folder(QStringLiteral(OSTRELLE_CORPUS) + u'/' + kind);
    QStringList paths;
    for (const QFileInfo& file : folder.entryInfoList(QDir::Files, QDir::Name)) {
        paths.append(file.absoluteFilePath());
    }
    return paths;
}

} // namespace ostrelle
