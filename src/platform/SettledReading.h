// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Files.h"

namespace ostrelle {

/// Attempts to read a file that another program may be writing: three at most.
class ReadAttempts {
public:
    /// Both must outlive it.
    ReadAttempts(const QString& path, const Pause& pause) : m_path(path), m_pause(pause) {}

    /// Waits a little, to let the file become whole. False after the last attempt.
    bool again();
    /// The same when what was read makes no sense; also false when the file has not changed since.
    bool againAfterFailure(const FileStamp& read);

private:
    const QString& m_path;
    const Pause& m_pause;
    std::size_t m_done = 0; ///< pauses
};

/// Reads a file and returns the result of `parse`, a function of const StampedBytes&. If `parse` throws and
/// the file has changed since it was read, or changes within 50 ms, another program may have been in the
/// middle of writing it: it is read again, in three attempts at most. Throws FileError, as readFile() does,
/// and what `parse` throws.
template <typename Parse>
auto readSettled(const QString& path, qint64 limit, const Parse& parse, const Pause& pause = pauseThread) {
    ReadAttempts attempts(path, pause);
    for (;;) {
        const StampedBytes file = readStampedFile(path, limit);
        try {
            return parse(file);
        } catch (...) {
            if (!attempts.againAfterFailure(file.stamp)) {
                throw;
            }
        }
    }
}

} // namespace ostrelle
