// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/FolderTidying.h"

#include "core/OnThreadPool.h"
#include "platform/AbandonedFiles.h"

#include <QFileInfo>
#include <utility>

namespace ostrelle {

QCoro::Task<> tidyFolder(FolderThreads& threads, QString folder) {
    auto tidy = [folder] { return removeAbandonedTemporaryFiles(folder); };
    co_await onThreadPool(threads.of(folder), tidy);
}

QCoro::Task<> tidyFoldersOf(FolderThreads& threads, QStringList files) {
    QStringList folders;
    for (const QString& file : std::as_const(files)) {
        folders.append(QFileInfo(file).path());
    }
    folders.removeDuplicates();
    for (const QString& folder : std::as_const(folders)) {
        co_await tidyFolder(threads, folder);
    }
}

} // namespace ostrelle
