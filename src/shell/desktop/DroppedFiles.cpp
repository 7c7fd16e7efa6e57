// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/desktop/DroppedFiles.h"

#include "core/Text.h"
#include "pipeline/AudioNote.h"
#include "pipeline/ManualSelection.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>
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

/// The first few names.
QString listed(const QStringList& names) {
    constexpr qsizetype most = 3;
    const QString first = names.first(std::min(names.size(), most)).join(u", "_s);
    return names.size() > most ? u"%1 and %2 more"_s.arg(first).arg(names.size() - most) : first;
}

} // namespace

DroppedFiles DroppedFiles::of(const QMimeData& data) {
    return ofPaths(localPaths(data));
}

DroppedFiles DroppedFiles::ofPaths(const QStringList& paths) {
    const ManualSelection selection = ManualSelection::of(paths);
    if (!selection.images.isEmpty()) {
        DroppedFiles files{.kind = Kind::images, .paths = selection.images + selection.sidecars};
        const QSet<QString> used(files.paths.begin(), files.paths.end());
        for (const QString& path : paths) {
            if (!used.contains(path) && !isAudioNote(path)) {
                files.leftOut.append(QFileInfo(path).fileName());
            }
        }
        return files;
    }
    if (paths.size() != 1 || !selection.sidecars.isEmpty() || isAudioNote(paths.first())) {
        return {};
    }
    const bool isText = QFileInfo(paths.first()).suffix().compare(u"txt"_s, Qt::CaseInsensitive) == 0;
    return {.kind = isText ? Kind::codeReplacements : Kind::folder,
            .paths = {QDir::cleanPath(paths.first())}};
}

QString DroppedFiles::words(SourceType source) const {
    const QString name = QFileInfo(paths.value(0)).fileName();
    switch (kind) {
    case Kind::folder:
        return source == SourceType::local ? u"Watch the folder “%1”"_s.arg(name)
                                           : u"Download into the folder “%1”"_s.arg(name);
    case Kind::codeReplacements:
        return u"Use “%1” as the code replacements file"_s.arg(name);
    case Kind::images:
        break;
    case Kind::useless:
        return u"Only images, one folder or one text file can be dropped here."_s;
    }
    const qsizetype count = ManualSelection::of(paths).images.size();
    const QString action = u"Caption %1 image%2"_s.arg(count).arg(plural(count));
    return leftOut.isEmpty() ? action : u"%1\nLeft out: %2"_s.arg(action, listed(leftOut));
}

} // namespace ostrelle
