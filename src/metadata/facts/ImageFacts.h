// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/facts/XMPContext.h"
#include "platform/FileStamp.h"

#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// What an image's metadata say about it.
struct ImageFacts {
    std::optional<QString> caption; ///< untrimmed from a sidecar; nothing when no field for it exists
    QStringList otherCaptions;      ///< the texts in the other fields that captions are written to
    XMPContext context;
    std::optional<QString> rights;  ///< trimmed
    std::optional<QString> creator; ///< trimmed

    friend bool operator==(const ImageFacts&, const ImageFacts&) = default;
};

/// The facts from one opening of the file that holds them, with the log lines of each step.
struct MetadataReading {
    ImageFacts facts;
    std::optional<FileStamp> image; ///< the stamp of the image file, from before its metadata were read
    QStringList captionLines;
    QStringList contextLines;
    QStringList rightsLines;
};

} // namespace ostrelle
