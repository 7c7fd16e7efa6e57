// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/SidecarCreation.h"

#include "core/OffMainThread.h"

#include <QFileInfo>

namespace ostrelle {

using namespace Qt::StringLiterals;

QCoro::Task<bool> createSidecar(AnalyzerParts parts, QString file) {
    const QFileInfo image(file);
    const ScopedAccess fileAccess(parts.access, file);
    const ScopedAccess folderAccess(parts.access, image.path());
    auto create = [xmp = parts.xmp, sidecar = sidecarPath(file)] { xmp.createEmptySidecar(sidecar); };
    co_await offMainThread(create);
    parts.log.print(u"[Analyzer] Created XMP sidecar for "_s + image.fileName());
    co_return true;
}

} // namespace ostrelle
