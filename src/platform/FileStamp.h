// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sys/stat.h>

#include <QString>
#include <optional>
#include <utility>

namespace ostrelle {

/// What changes when a program writes a file, replaces it or sets its dates: some put the date of the last
/// change back, but nobody sets that of the file's own record.
struct FileStamp {
    explicit FileStamp(const struct stat& status);

    /// Of the file that is at the path now; a symbolic link is followed. Nothing without a file.
    static std::optional<FileStamp> at(const QString& path);

    bool operator==(const FileStamp&) const = default;

    dev_t device;
    ino_t number;
    off_t size;
    std::pair<time_t, long> contentChanged; ///< seconds and nanoseconds
    std::pair<time_t, long> recordChanged;
};

} // namespace ostrelle
