// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/bytes/JpegFront.h"

#include "metadata/bytes/JpegSegments.h"

#include <optional>

namespace ostrelle {

QByteArray readJpegFront(QFile& file) {
    constexpr qint64 most = qint64{128} << 20;
    QByteArray bytes;
    for (qint64 wanted = qint64{128} << 10; wanted <= most; wanted *= 4) {
        bytes += file.read(wanted - bytes.size());
        const std::optional<JpegSegments> found = JpegSegments::walk(bytes);
        if (!found || !found->isCut || bytes.size() < wanted) {
            break;
        }
    }
    return bytes;
}

} // namespace ostrelle
