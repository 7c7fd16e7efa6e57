// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/source/CaptionSource.h"
#include "platform/PlainLog.h"

#include <QString>
#include <optional>

namespace ostrelle {

/// Writes the caption into the JPEG file's own metadata; on any failure the old file is intact. The picture
/// is decoded first, unless it is still the source's, and the file is read again when another program
/// replaces it meanwhile. Returns what the new one looks like. Tells the log what goes wrong. Throws
/// XMPError: fileMissing, parseFailed or writeFailed; with a source, OvertakenError where the file is no
/// longer that.
FileStamp writeCaptionIntoJpeg(const QString& path, const QString& caption, PlainLog& log,
                               const std::optional<CaptionSource>& source = {});

/// Finds out whether a caption could be written into the file, from its metadata and rights, and changes
/// nothing. Throws XMPError: fileMissing or writeFailed, and tells the log why.
void requireEditableJpeg(const QString& path, PlainLog& log);

} // namespace ostrelle
