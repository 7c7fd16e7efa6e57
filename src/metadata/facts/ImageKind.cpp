// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/facts/ImageKind.h"

#include <QSet>

namespace ostrelle {

using namespace Qt::StringLiterals;

const QStringList& imageExtensions() {
    static const QStringList extensions = {u"cr2"_s, u"cr3"_s, u"nef"_s, u"arw"_s, u"raf"_s, u"orf"_s,
                                           u"rw2"_s, u"dng"_s, u"srw"_s, u"pef"_s, u"jpg"_s, u"jpeg"_s};
    return extensions;
}

QString extensionOf(QStringView path) {
    const QStringView name = path.sliced(path.lastIndexOf(u'/') + 1);
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot < 0 ? QString() : name.sliced(dot + 1).toString().toLower();
}

bool isSupportedImage(const QString& path) {
    static const QSet<QString> extensions(imageExtensions().begin(), imageExtensions().end());
    return extensions.contains(extensionOf(path));
}

bool isJpegImage(const QString& path) {
    const QString extension = extensionOf(path);
    return extension == u"jpg" || extension == u"jpeg";
}

} // namespace ostrelle
