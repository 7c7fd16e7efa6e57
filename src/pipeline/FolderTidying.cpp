// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/FolderTidying.h"

#include "core/OnThreadPool.h"
#include "platform/AbandonedFiles.h"

namespace ostrelle {

QCoro::Task<> tidyFolder(FolderThreads& threads, QString folder) {
    auto tidy = [folder] { return removeAbandonedTemporaryFiles(folder); };
    co_await onThreadPool(threads.of(folder), tidy);
}

} // namespace ostrelle
