// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/facts/XMPContext.h"
#include "platform/FileStamp.h"

#include <QString>
#include <QStringList>
#include <exception>
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

/// The facts and whether a caption could be written beside them, from one opening.
struct EditableReading {
    MetadataReading reading;
    std::exception_ptr refusal; ///< what the write would throw; null when nothing speaks against it
    QStringList refusalLines;   ///< for the log
};

/// A caption as it stands in its file after the write.
struct WrittenCaption {
    std::optional<FileStamp> image; ///< what the image file looked like with its caption
    std::optional<QString> caption; ///< read from what was written
    QStringList captionLines;       ///< for the log, from that reading
};

} // namespace ostrelle
