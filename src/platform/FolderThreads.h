// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QThreadPool>
#include <map>
#include <memory>

namespace ostrelle {

/// Worker threads for each folder. A network share that hangs for hours then blocks only its own threads.
class FolderThreads {
public:
    FolderThreads() = default;
    /// Waits briefly for work under way. Leaves a hanging thread behind, so that it cannot keep the program
    /// from ending.
    ~FolderThreads();
    FolderThreads(const FolderThreads&) = delete;
    FolderThreads& operator=(const FolderThreads&) = delete;

    /// The one thread that lists, reads and writes the folder's files. Valid as long as this object. An idle
    /// thread ends after a while.
    QThreadPool* of(const QString& folder);
    /// The threads that decode the folder's pictures, one per core. Valid as long as this object.
    QThreadPool* renderersOf(const QString& folder);

private:
    struct Threads {
        Threads() { files.setMaxThreadCount(1); }

        QThreadPool files;
        QThreadPool renderers;
    };

    Threads& threadsOf(const QString& folder);

    std::map<QString, std::unique_ptr<Threads>> m_threads;
};

} // namespace ostrelle
