// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/sidecar/HalfSidecar.h"

#include "core/Error.h"
#include "metadata/xml/XmlDocument.h"
#include "metadata/xml/XmlError.h"
#include "platform/Files.h"

namespace ostrelle {

bool isHalfSidecar(const QString& path) {
    if (!path.endsWith(QStringLiteral(".xmp"), Qt::CaseInsensitive)) {
        return false;
    }
    try {
        XmlDocument::parse(readFile(path, XmlDocument::maximumSize));
        return false;
    } catch (const XmlError&) {
        return true;
    } catch (const Error&) {
        return false;
    }
}

} // namespace ostrelle
