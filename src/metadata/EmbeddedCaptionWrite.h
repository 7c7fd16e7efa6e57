// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/FileStamp.h"
#include "platform/PlainLog.h"

#include <QString>
#include <optional>

namespace ostrelle {

/// Writes the caption into the JPEG file's own metadata; on any failure the old file is intact. The picture
/// is decoded first, unless `decoded` says that this very file has been, and the file is read again when
/// another program replaces it meanwhile. Tells the log what goes wrong. Throws XMPError: fileMissing,
/// parseFailed or writeFailed.
void writeCaptionIntoJpeg(const QString& path, const QString& caption, PlainLog& log,
                          const std::optional<FileStamp>& decoded = {});

} // namespace ostrelle
