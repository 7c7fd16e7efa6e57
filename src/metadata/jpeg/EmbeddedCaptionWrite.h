// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/source/CaptionSource.h"
#include "platform/PlainLog.h"

#include <QString>
#include <optional>

namespace ostrelle {

/// Writes the caption into the JPEG file's own metadata; on any failure the old file is intact. Decodes the
/// picture first, unless it is still the source's, and reads the file again when another program replaces it
/// meanwhile. Returns the stamp of the new file. Logs failures. Throws XMPError: fileMissing, parseFailed or
/// writeFailed; with a source, OvertakenError when the file no longer matches it.
FileStamp writeCaptionIntoJpeg(const QString& path, const QString& caption, PlainLog& log,
                               const std::optional<CaptionSource>& source = {});

/// Checks from the file's metadata and rights whether a caption could be written, without changing anything.
/// Throws XMPError: fileMissing or writeFailed, and logs why.
void requireEditableJpeg(const QString& path, PlainLog& log);

} // namespace ostrelle
