// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/FileStamp.h"

#include <QString>
#include <optional>

namespace ostrelle {

/// Changes whenever a file does that an image's metadata are read from.
struct MetadataStamp {
    std::optional<FileStamp> image;
    std::optional<FileStamp> sidecar = {}; ///< of an image that has one

    bool operator==(const MetadataStamp&) const = default;

    /// The current stamp. For worker threads.
    static MetadataStamp of(const QString& image);
};

} // namespace ostrelle
