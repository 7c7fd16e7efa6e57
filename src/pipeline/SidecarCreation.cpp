// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/SidecarCreation.h"

#include "core/OffMainThread.h"

#include <QFileInfo>

namespace ostrelle {

using namespace Qt::StringLiterals;

QCoro::Task<> createSidecar(AnalyzerParts parts, QString file) {
    const QFileInfo image(file);
    auto look = [sidecar = sidecarPath(file)] { return QFileInfo::exists(sidecar); };
    if (co_await offMainThread(look)) {
        co_return;
    }
    const ScopedAccess fileAccess(parts.access, file);
    const ScopedAccess folderAccess(parts.access, image.path());
    auto create = [xmp = parts.xmp, sidecar = sidecarPath(file)] {
        return xmp.createMissingSidecar(sidecar);
    };
    const bool isNew = co_await offMainThread(create);
    if (isNew) {
        parts.log.print(u"[Analyzer] Created XMP sidecar for "_s + image.fileName());
    }
}

} // namespace ostrelle
