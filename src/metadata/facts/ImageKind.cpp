// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/facts/ImageKind.h"

#include <QFileInfo>

namespace ostrelle {

using namespace Qt::StringLiterals;

const QStringList& imageExtensions() {
    static const QStringList extensions = {u"cr2"_s, u"cr3"_s, u"nef"_s, u"arw"_s, u"raf"_s, u"orf"_s,
                                           u"rw2"_s, u"dng"_s, u"srw"_s, u"pef"_s, u"jpg"_s, u"jpeg"_s};
    return extensions;
}

bool isSupportedImage(const QString& path) {
    return imageExtensions().contains(QFileInfo(path).suffix().toLower());
}

bool isJpegImage(const QString& path) {
    const QString extension = QFileInfo(path).suffix().toLower();
    return extension == u"jpg" || extension == u"jpeg";
}

} // namespace ostrelle
