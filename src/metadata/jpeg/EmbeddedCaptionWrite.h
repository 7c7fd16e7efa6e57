// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/bytes/ImageFile.h"
#include "metadata/facts/ImageFacts.h"
#include "metadata/source/CaptionSource.h"
#include "platform/PlainLog.h"

#include <QString>
#include <QTimeZone>
#include <optional>

namespace ostrelle {

/// Writes the caption into the JPEG file's own metadata; on any failure the old file is intact. Decodes the
/// picture first, unless it is still the source's, and reads the file again when another program replaces it
/// meanwhile. Logs failures. Throws XMPError: fileMissing, parseFailed or writeFailed; with a source,
/// OvertakenError when the file no longer matches it.
WrittenCaption writeCaptionIntoJpeg(const QString& path, const QString& caption, PlainLog& log,
                                    const std::optional<CaptionSource>& source = {});

/// Reads the file's metadata and checks whether a caption could be written into it, without changing
/// anything. The refusal is XMPError::writeFailed. Dates become days in the given zone. Throws
/// XMPError::fileMissing when the file cannot be opened.
EditableReading readEditableJpeg(ImageFile& image, const QTimeZone& zone);

} // namespace ostrelle
