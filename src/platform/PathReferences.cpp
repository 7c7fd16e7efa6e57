// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/PathReferences.h"

#include "core/Error.h"

#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

namespace ostrelle {

using namespace Qt::StringLiterals;

QByteArray PathReferences::make(const QString& path) const {
    const QFileInfo info(path);
    if (!info.exists()) {
        throw Error(u"There is no file or folder at %1."_s.arg(path));
    }
    const QJsonObject reference{{u"path"_s, info.absoluteFilePath()}, {u"folder"_s, info.isDir()}};
    return QJsonDocument(reference).toJson(QJsonDocument::Compact);
}

ResolvedFile PathReferences::resolve(const QByteArray& reference) const {
    const QJsonObject stored = QJsonDocument::fromJson(reference).object();
    const QJsonValue path = stored.value("path"_L1);
    const QJsonValue folder = stored.value("folder"_L1);
    if (!path.isString() || !folder.isBool()) {
        throw Error(u"The stored file reference is damaged."_s);
    }
    const QFileInfo info(path.toString());
    return {path.toString(), info.exists() && info.isDir() != folder.toBool()};
}

} // namespace ostrelle
