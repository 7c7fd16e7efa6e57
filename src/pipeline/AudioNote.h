// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerLog.h"
#include "services/OpenAIClient.h"

#include <QCoroTask>
#include <QString>
#include <QStringList>
#include <QThreadPool>
#include <optional>

namespace ostrelle {

/// The audio files beside an image that bear its name, in the order in which they are to be tried. Looks at
/// the disk.
QStringList audioNotesOf(const QString& image);

/// How the model is to take what the photographer said.
enum class AudioWeight { context, priority };

/// What the photographer said in the first of the audio files that can be transcribed, in writing. Nothing
/// without a file, and when nothing was said. Never throws: an image is not lost for its note. The files are
/// read on one of the reader's threads.
QCoro::Task<std::optional<QString>> transcribeAudioNote(OpenAIClient& openAI, AnalyzerLog& log,
                                                        QThreadPool* reader, AudioWeight weight,
                                                        QString imageName, QStringList notes);

} // namespace ostrelle
