// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QThreadPool>
#include <map>
#include <memory>

namespace ostrelle {

/// One worker thread for each folder that is watched. A network share may hang for hours: it then holds its
/// own thread, and neither those that render images nor that of the folder which the user turns to.
class FolderThreads {
public:
    FolderThreads() = default;
    /// Waits a moment for what is under way. A thread that hangs is left behind: it must not keep the program
    /// from ending.
    ~FolderThreads();
    FolderThreads(const FolderThreads&) = delete;
    FolderThreads& operator=(const FolderThreads&) = delete;

    /// Valid as long as this object. A thread that is idle for a while ends by itself.
    QThreadPool* of(const QString& folder);

private:
    std::map<QString, std::unique_ptr<QThreadPool>> m_pools;
};

} // namespace ostrelle
