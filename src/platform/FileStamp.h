// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sys/stat.h>

#include <QString>
#include <optional>
#include <utility>

namespace ostrelle {

/// Changes whenever a program writes a file, replaces it or sets its dates. A program may restore the date of
/// the last change, but not that of the inode.
struct FileStamp {
    explicit FileStamp(const struct stat& status);

    /// The stamp of the file now at the path, following symbolic links. Nothing without a file.
    static std::optional<FileStamp> at(const QString& path);

    bool operator==(const FileStamp&) const = default;

    dev_t device;
    ino_t number;
    off_t size;
    std::pair<time_t, long> contentChanged; ///< seconds and nanoseconds
    std::pair<time_t, long> recordChanged;
};

} // namespace ostrelle
