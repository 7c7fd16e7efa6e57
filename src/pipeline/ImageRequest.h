// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/facts/ImageFacts.h"
#include "platform/FileStamp.h"

#include <QDateTime>
#include <QString>
#include <optional>

namespace ostrelle {

/// An image that is to be captioned, as it was when it was looked at.
struct ImageRequest {
    enum class Sender {
        user,
        autoMode, ///< has seen to the roster, and looks anew at an image that has changed
    };

    QString file;
    QDateTime seenAt;
    Sender sender = Sender::user;
    /// What its metadata said; nothing when they could not be read.
    std::optional<ImageFacts> facts = {};
    std::optional<FileStamp> image = {}; ///< of the image file, with the facts
};

} // namespace ostrelle
