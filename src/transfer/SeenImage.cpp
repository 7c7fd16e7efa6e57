// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/SeenImage.h"

namespace ostrelle {

QList<SeenImage> seeImages(const QString& folder, const QStringList& names) {
    QList<SeenImage> images;
    images.reserve(names.size());
    for (const QString& name : names) {
        images.append({name, ProcessedFileEntry::of(folder + u'/' + name)});
    }
    return images;
}

} // namespace ostrelle
