// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QThreadPool>
#include <map>
#include <memory>

namespace ostrelle {

/// Worker threads for each folder. A network share may hang for hours: it then holds its own threads, and
/// none of another folder.
class FolderThreads {
public:
    FolderThreads() = default;
    /// Waits a moment for what is under way. A thread that hangs is left behind: it must not keep the program
    /// from ending.
    ~FolderThreads();
    FolderThreads(const FolderThreads&) = delete;
    FolderThreads& operator=(const FolderThreads&) = delete;

    /// The one thread on which the folder's files are listed, read and written. Valid as long as this object.
    /// A thread that is idle for a while ends by itself.
    QThreadPool* of(const QString& folder);
    /// The threads on which the folder's pictures are decoded, as many as there are cores. Likewise.
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
