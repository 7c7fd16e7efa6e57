// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include "standins/HttpRequestReader.h"

namespace ostrelle {

/// What a transcription request that passed all checks sends.
struct CheckedTranscription {
    QString fileName;
    QByteArray audio;
};

/// Checks a request to the transcription endpoint as the real service does, and in addition that its form is
/// to the byte the one that this program sends. Throws ApiFault.
CheckedTranscription checkTranscriptionRequest(const HttpRequest& request);

/// The endpoint's reply: the words of a voiceNote(), of any other file only that it is a voice note.
QByteArray standInTranscription(const CheckedTranscription& transcription);

/// A WAV file that holds the words as a text in place of a sound.
QByteArray voiceNote(const QString& words);

} // namespace ostrelle
