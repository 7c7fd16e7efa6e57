// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/facts/ImageFacts.h"
#include "platform/FileStamp.h"

#include <QDateTime>
#include <QString>
#include <optional>

namespace ostrelle {

/// A request to caption an image, with its state when the sender looked at it.
struct ImageRequest {
    enum class Sender {
        user,
        server,   ///< has fetched the image; once captioned, it goes into the manifest
        autoMode, ///< the same, but has checked for a roster, and tries a changed image again
    };

    QString file;
    QDateTime seenAt; ///< if the image was captioned after that, it is skipped
    Sender sender = Sender::user;
    /// From its metadata; nothing if they were not read.
    std::optional<ImageFacts> facts = {};
    std::optional<FileStamp> image = {}; ///< stamp of the image file, with the facts
};

} // namespace ostrelle
