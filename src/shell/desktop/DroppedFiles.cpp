// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/desktop/DroppedFiles.h"

#include "pipeline/ManualSelection.h"

#include <QDir>
#include <QFileInfo>
#include <QUrl>
#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Empty when any of them is not a local file.
QStringList localPaths(const QMimeData& data) {
    QStringList paths;
    const QList<QUrl> urls = data.urls();
    for (const QUrl& url : urls) {
        if (!url.isLocalFile()) {
            return {};
        }
        paths.append(url.toLocalFile());
    }
    return paths;
}

/// Decided by the names alone: hundreds of files may be dragged over the window.
bool areImages(const QStringList& paths) {
    return !ManualSelection::of(paths).images.isEmpty() &&
           std::all_of(paths.begin(), paths.end(), [](const QString& path) {
               const ManualSelection one = ManualSelection::of({path});
               return !one.images.isEmpty() || !one.sidecars.isEmpty();
           });
}

} // namespace

std::optional<DroppedFiles> DroppedFiles::of(const QMimeData& data) {
    const QStringList paths = localPaths(data);
    if (areImages(paths)) {
        return DroppedFiles{Kind::images, paths};
    }
    if (paths.size() != 1 || !ManualSelection::of(paths).sidecars.isEmpty()) {
        return std::nullopt;
    }
    const bool isText = QFileInfo(paths.first()).suffix().compare(u"txt"_s, Qt::CaseInsensitive) == 0;
    return DroppedFiles{isText ? Kind::codeReplacements : Kind::folder, {QDir::cleanPath(paths.first())}};
}

} // namespace ostrelle
