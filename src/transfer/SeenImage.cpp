// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/SeenImage.h"

namespace ostrelle {

QList<SeenImage> seeImages(const QString& folder, const QStringList& names, const CloserLook& closer) {
    QList<SeenImage> images;
    images.reserve(names.size());
    for (const QString& name : names) {
        const QString path = folder + u'/' + name;
        images.append({.name = name, .entry = ProcessedFileEntry::of(path)});
        if (closer.conditions.contains(name)) {
            images.last().conditions = EditConditions::of(path);
        }
        if (closer.stamp.contains(name)) {
            images.last().stamp = MetadataStamp::of(path);
        }
    }
    return images;
}

} // namespace ostrelle
