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

/// Whether a file of this name would be an audio note.
bool isAudioNote(const QString& file);

/// The audio files beside an image that share its name, in the order to try them. Reads the disk: for worker
/// threads.
QStringList audioNotesOf(const QString& image);

/// How much weight the model is to give the audio note.
enum class AudioWeight { context, priority };

/// The transcript of the first audio file that can be transcribed, untrimmed. Nothing without such a file, or
/// if it is silent. Logs transcripts and failures. Never throws: an image is not lost for its note. The files
/// are read on one of the reader's threads.
QCoro::Task<std::optional<QString>> transcribeAudioNote(OpenAIClient& openAI, AnalyzerLog& log,
                                                        QThreadPool* reader, AudioWeight weight,
                                                        QString imageName, QStringList notes);

} // namespace ostrelle
