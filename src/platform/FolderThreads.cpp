// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/FolderThreads.h"

#include <QDir>

namespace ostrelle {

FolderThreads::~FolderThreads() {
    constexpr int patience = 1000; // milliseconds
    for (auto& [folder, threads] : m_threads) {
        bool isIdle = true;
        for (QThreadPool* pool : {&threads->files, &threads->renderers}) {
            pool->clear();
            isIdle = pool->waitForDone(patience) && isIdle;
        }
        if (!isIdle) {
            static_cast<void>(threads.release());
        }
    }
}

QThreadPool* FolderThreads::of(const QString& folder) {
    return &threadsOf(folder).files;
}

QThreadPool* FolderThreads::renderersOf(const QString& folder) {
    return &threadsOf(folder).renderers;
}

FolderThreads::Threads& FolderThreads::threadsOf(const QString& folder) {
    std::unique_ptr<Threads>& threads = m_threads[QDir::cleanPath(folder)];
    if (!threads) {
        threads = std::make_unique<Threads>();
    }
    return *threads;
}

} // namespace ostrelle
