// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerParts.h"

#include <QCoroTask>
#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// The audio files beside an image that bear its name, in the order in which they are to be tried.
QStringList audioNotesOf(const QString& image);

/// What the photographer said in the first audio file beside the image that can be transcribed, in writing.
/// Nothing without such a file, and when nothing was said. Never throws: an image is not lost for its note.
QCoro::Task<std::optional<QString>> transcribeAudioNote(AnalyzerParts parts, QString image);

} // namespace ostrelle
