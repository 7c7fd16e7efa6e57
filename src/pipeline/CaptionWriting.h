// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerParts.h"
#include "pipeline/PreparedImage.h"

#include <QCoroTask>
#include <QString>
#include <optional>

namespace ostrelle {

/// Writes the caption into the image's metadata, if the image is still what the caption was made from. Throws
/// OvertakenError where it is not, and what went wrong. Resumes with what the image file looked like with its
/// caption.
QCoro::Task<std::optional<FileStamp>> writeCaption(AnalyzerParts parts, PreparedImage image, QString caption);

} // namespace ostrelle
