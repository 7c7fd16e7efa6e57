// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <chrono>

namespace ostrelle {

/// Keeps the other processes that ask for it from writing a file while it lives. The kernel releases it when
/// a process is killed; the lock file beside the file, with ".lock" at its end, stays, as removing it would
/// pull it away from under somebody who waits for it.
class FileLock {
public:
    /// Blocks until the lock is free, but not longer than `patience`: a process that has been stopped in the
    /// middle of a write must not stop the others for good. Throws FileError.
    FileLock(const QString& path, std::chrono::milliseconds patience);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    int m_descriptor;
};

} // namespace ostrelle
