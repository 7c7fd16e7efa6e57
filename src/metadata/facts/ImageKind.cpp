// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/facts/ImageKind.h"

#include <QFileInfo>
#include <QStringList>

namespace ostrelle {

using namespace Qt::StringLiterals;

bool isSupportedImage(const QString& path) {
    static const QStringList rawExtensions = {u"cr2"_s, u"cr3"_s, u"nef"_s, u"arw"_s, u"raf"_s,
                                              u"orf"_s, u"rw2"_s, u"dng"_s, u"srw"_s, u"pef"_s};
    return isJpegImage(path) || rawExtensions.contains(QFileInfo(path).suffix().toLower());
}

bool isJpegImage(const QString& path) {
    const QString extension = QFileInfo(path).suffix().toLower();
    return extension == u"jpg" || extension == u"jpeg";
}

} // namespace ostrelle
