// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/source/CaptionSource.h"

#include <QByteArray>
#include <QString>
#include <optional>

namespace ostrelle {

/// What was gathered about one image for the model.
struct PreparedImage {
    QString file;
    CaptionSource source;   ///< the facts and the picture that the caption is made from
    QString defaultCaption; ///< the present caption, trimmed, or "No caption"
    std::optional<QString> audioTranscription;

    const QByteArray& jpegData() const { return source.picture.rendition.jpeg; }
    const XMPContext& context() const { return source.facts.context; }
    const std::optional<QString>& rights() const { return source.facts.rights; }
};

} // namespace ostrelle
