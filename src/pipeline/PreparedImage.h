// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/XMPContext.h"
#include "platform/FileStamp.h"

#include <QByteArray>
#include <QString>
#include <optional>

namespace ostrelle {

/// What was gathered of one image for the model.
struct PreparedImage {
    QString file;
    QByteArray jpegData;              ///< the rendition
    std::optional<FileStamp> decoded; ///< the file as it was when the rendition was made of it
    XMPContext context;
    QString defaultCaption; ///< the caption that the image has now, trimmed, or "No caption"
    std::optional<QString> rights;
    std::optional<QString> audioTranscription;
};

} // namespace ostrelle
