// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/PathReferences.h"

#include "core/Error.h"

#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

struct Reference {
    QString path;
    bool isFolder;
};

Reference parse(const QByteArray& reference) {
    const QJsonObject stored = QJsonDocument::fromJson(reference).object();
    const QJsonValue path = stored.value("path"_L1);
    const QJsonValue folder = stored.value("folder"_L1);
    if (!path.isString() || !folder.isBool()) {
        throw Error(u"The stored file reference is damaged."_s);
    }
    return {path.toString(), folder.toBool()};
}

} // namespace

QByteArray PathReferences::make(const QString& path) const {
    const QFileInfo info(path);
    if (!info.exists()) {
        throw Error(u"There is no file or folder at %1."_s.arg(path));
    }
    const QJsonObject reference{{u"path"_s, info.absoluteFilePath()}, {u"folder"_s, info.isDir()}};
    return QJsonDocument(reference).toJson(QJsonDocument::Compact);
}

QString PathReferences::pathOf(const QByteArray& reference) const {
    return parse(reference).path;
}

ResolvedFile PathReferences::resolve(const QByteArray& reference) const {
    const auto [path, isFolder] = parse(reference);
    const QFileInfo info(path);
    const bool isThere = !path.isEmpty() && info.exists();
    return {.path = path, .isThere = isThere, .isStale = isThere && info.isDir() != isFolder};
}

} // namespace ostrelle
