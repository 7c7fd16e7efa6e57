// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/FolderThreads.h"

#include <QDir>

namespace ostrelle {

FolderThreads::~FolderThreads() {
    constexpr int patience = 1000; // milliseconds
    for (auto& [folder, pool] : m_pools) {
        pool->clear();
        if (!pool->waitForDone(patience)) {
            static_cast<void>(pool.release());
        }
    }
}

QThreadPool* FolderThreads::of(const QString& folder) {
    std::unique_ptr<QThreadPool>& pool = m_pools[QDir::cleanPath(folder)];
    if (!pool) {
        pool = std::make_unique<QThreadPool>();
        pool->setMaxThreadCount(1);
    }
    return pool.get();
}

} // namespace ostrelle
