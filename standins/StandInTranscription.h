// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "standins/HttpRequestReader.h"

#include <QByteArray>
#include <QString>

namespace ostrelle {

/// The contents of a transcription request that passed all checks.
struct CheckedTranscription {
    QString fileName;
    QByteArray audio;
};

/// Checks a request to the transcription endpoint as the real service does, and also that its form matches
/// this program's byte for byte. Throws ApiFault.
CheckedTranscription checkTranscriptionRequest(const HttpRequest& request);

/// The endpoint's reply: the words of a voiceNote(); for any other file, only that it is a voice note.
QByteArray standInTranscription(const CheckedTranscription& transcription);

/// A WAV file that holds the words as text instead of sound.
QByteArray voiceNote(const QString& words);

} // namespace ostrelle
