// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerParts.h"
#include "pipeline/PreparedImage.h"

#include <QCoroTask>
#include <QString>

namespace ostrelle {

/// Writes the caption into the image's metadata, if the image is still what the caption was made from. Throws
/// OvertakenError where it is not, and what went wrong.
QCoro::Task<> writeCaption(AnalyzerParts parts, PreparedImage image, QString caption);

} // namespace ostrelle
