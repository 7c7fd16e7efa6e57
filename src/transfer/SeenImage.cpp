// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/SeenImage.h"

namespace ostrelle {

QList<SeenImage> seeImages(const QString& folder, const QStringList& names, const QSet<QString>& unwritable) {
    QList<SeenImage> images;
    images.reserve(names.size());
    for (const QString& name : names) {
        const QString path = folder + u'/' + name;
        const std::optional<FileStamp> stamp = FileStamp::at(path);
        images.append({.name = name, .entry = stamp ? ProcessedFileEntry::of(path, *stamp) : std::nullopt});
        if (unwritable.contains(name)) {
            images.last().conditions = EditConditions::of(path);
        }
    }
    return images;
}

} // namespace ostrelle
