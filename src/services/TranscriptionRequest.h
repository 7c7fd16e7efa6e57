// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

namespace ostrelle {

/// In bytes, so that no file exhausts memory. Ten times what the service accepts.
constexpr qint64 largestAudioFile = qint64{256} * 1024 * 1024;

/// The body of a request to the transcription endpoint.
struct TranscriptionBody {
    QByteArray bytes;
    qsizetype audioSize = 0; ///< of the file, in bytes
};

/// A fresh boundary, different for each request.
QByteArray newBoundary();

/// A multipart form with a file of this name and content, and the model's name.
QByteArray transcriptionForm(const QByteArray& audio, const QString& fileName, const QByteArray& boundary);

/// Reads the audio file into a form. Throws FileError.
TranscriptionBody readTranscriptionBody(const QString& file, const QByteArray& boundary);

/// The text in a reply's body. Throws JsonError.
QString decodeTranscription(const QByteArray& json);

} // namespace ostrelle
