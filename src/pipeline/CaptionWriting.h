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

/// The caption that the reply becomes on its path, or nothing when the image keeps its own, which is logged
/// like a reply with placeholders left in.
std::optional<QString> acceptReply(CaptionPath path, const QString& reply, const PreparedImage& image,
                                   const SettingsStore& settings, AnalyzerLog& log);

/// Writes the caption into the image's metadata on the thread of its folder, if the image is still what the
/// caption was made from, and marks it in the manifest if its path says so. Otherwise throws OvertakenError;
/// also throws the failure of the write.
QCoro::Task<WrittenCaption> writeCaption(AnalyzerParts parts, CaptionPath path, PreparedImage image,
                                         QString caption);

} // namespace ostrelle
