// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/SidecarCreation.h"

#include "metadata/ImageMetadata.h"
#include "pipeline/FolderWork.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

QCoro::Task<bool> createSidecar(FolderThreads& threads, FileAccess& access, PlainLog& console, QString file) {
    const ScopedAccess fileAccess(access, file);
    const ScopedAccess folderAccess(access, QFileInfo(file).path());
    auto provide = [file] { return ImageMetadata(file).provideSidecar(); };
    const bool isNew = co_await onThreadOf(threads, file, provide);
    if (isNew) {
        console.print(u"[Analyzer] Created XMP sidecar for "_s + QFileInfo(file).fileName());
    }
    co_return isNew;
}

} // namespace ostrelle
