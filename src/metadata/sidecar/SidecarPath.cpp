// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/sidecar/SidecarPath.h"

#include <QFileInfo>
#include <array>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QString withoutExtension(const QString& imagePath) {
    const qsizetype dot = imagePath.lastIndexOf(u'.');
    const bool hasExtension = dot > imagePath.lastIndexOf(u'/') && dot + 1 < imagePath.size();
    return hasExtension ? imagePath.first(dot) : imagePath;
}

} // namespace

QString sidecarPath(const QString& imagePath) {
    return withoutExtension(imagePath) + u".xmp"_s;
}

QString findSidecar(const QString& imagePath) {
    static const std::array spellings = {u".xmp"_s, u".XMP"_s, u".Xmp"_s, u".xMP"_s,
                                         u".XMp"_s, u".XmP"_s, u".xMp"_s, u".xmP"_s};
    const QString stem = withoutExtension(imagePath);
    for (const QString& extension : spellings) {
        if (QFileInfo::exists(stem + extension)) {
            return stem + extension;
        }
    }
    return stem + spellings.front();
}

} // namespace ostrelle
