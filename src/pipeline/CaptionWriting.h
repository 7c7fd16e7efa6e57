// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/facts/ImageFacts.h"
#include "pipeline/AnalyzerParts.h"
#include "pipeline/CaptionAcceptance.h"
#include "pipeline/PreparedImage.h"

#include <QCoroTask>
#include <QString>
#include <optional>

namespace ostrelle {

/// The caption that the reply becomes on its path; nothing where the image keeps the one that it has, which
/// is logged.
std::optional<QString> acceptReply(CaptionPath path, const QString& reply, const PreparedImage& image,
                                   const SettingsStore& settings, AnalyzerLog& log);

/// Writes the caption into the image's metadata, if the image is still what the caption was made from, and
/// marks it in the manifest where its path says so. Throws OvertakenError where it is not, and what went
/// wrong.
QCoro::Task<WrittenCaption> writeCaption(AnalyzerParts parts, CaptionPath path, PreparedImage image,
                                         QString caption);

} // namespace ostrelle
