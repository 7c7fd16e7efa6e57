// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <chrono>

namespace ostrelle {

/// Keeps other processes that take the same lock from writing a file while it lives. The kernel releases it
/// when a process is killed. The lock file, named after the file with ".lock" at the end, stays: removing it
/// would pull it out from under anyone waiting for it.
class FileLock {
public:
    /// Blocks until the lock is free, at most for `patience`: a process stopped in the middle of a write must
    /// not block the others for good. Throws FileError.
    FileLock(const QString& path, std::chrono::milliseconds patience);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    int m_descriptor;
};

} // namespace ostrelle
