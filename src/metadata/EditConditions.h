// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/FileStamp.h"

#include <sys/types.h>

#include <QString>
#include <optional>

namespace ostrelle {

/// What decides whether a caption can be written into an image. After a failed edit, another attempt only
/// makes sense when one of these has changed.
struct EditConditions {
    std::optional<FileStamp> image;
    std::optional<FileStamp> sidecar; ///< of an image that has one
    dev_t folderDevice = 0;
    ino_t folderNumber = 0;
    mode_t folderMode = 0;
    bool isFolderWritable = false;
    bool isFileWritable = false; ///< the file that the caption goes into
    bool hasRoom = false;

    bool operator==(const EditConditions&) const = default;

    /// The current conditions. For worker threads.
    static EditConditions of(const QString& image);
};

} // namespace ostrelle
