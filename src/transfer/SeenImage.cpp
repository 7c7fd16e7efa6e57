// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/SeenImage.h"

namespace ostrelle {

QList<SeenImage> seeImages(const QString& folder, const QStringList& names, const CloserLook& closer) {
    QList<SeenImage> images;
    images.reserve(names.size());
    for (const QString& name : names) {
        const QString path = folder + u'/' + name;
        const std::optional<FileStamp> stamp = FileStamp::at(path);
        images.append({.name = name, .entry = stamp ? ProcessedFileEntry::of(path, *stamp) : std::nullopt});
        if (closer.conditions.contains(name)) {
            images.last().conditions = EditConditions::of(path);
        }
        if (closer.stamp.contains(name)) {
            images.last().stamp = MetadataStamp::of(path, stamp);
        }
    }
    return images;
}

} // namespace ostrelle
