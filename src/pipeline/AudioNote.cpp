// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/AudioNote.h"

#include "core/Attempt.h"

#include <QFileInfo>
#include <algorithm>
#include <array>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr std::array audioExtensions = {"wav"_L1, "mp3"_L1, "m4a"_L1, "aac"_L1, "aiff"_L1, "flac"_L1};

} // namespace

bool isAudioNote(const QString& file) {
    const QString extension = QFileInfo(file).suffix().toLower();
    return std::find(audioExtensions.begin(), audioExtensions.end(), extension) != audioExtensions.end();
}

QStringList audioNotesOf(const QString& image) {
    const QString stem = image.chopped(QFileInfo(image).suffix().size());
    QStringList notes;
    for (const QLatin1StringView extension : audioExtensions) {
        const QString lower = extension;
        for (const QString& spelling : {lower, lower.toUpper()}) { // cameras write capitals
            if (QFileInfo(stem + spelling).isFile()) {
                notes.append(stem + spelling);
            }
        }
    }
    return notes;
}

QCoro::Task<std::optional<QString>> transcribeAudioNote(OpenAIClient& openAI, AnalyzerLog& log,
                                                        QThreadPool* reader, AudioWeight weight,
                                                        QString imageName, QStringList notes) {
    for (const QString& note : std::as_const(notes)) {
        log.appendToLog(u"[Analyzer] Found audio file: "_s + QFileInfo(note).fileName());
        const auto words = co_await attempt(openAI.transcribeAudio(note, reader));
        if (words) {
            log.appendToLog(u"[Analyzer] Audio transcription (%1): %2"_s.arg(
                weight == AudioWeight::priority ? u"PRIORITY"_s : u"CONTEXT"_s, *words));
            co_return words->trimmed().isEmpty() ? std::nullopt : std::optional(*words);
        }
        log.appendToLog(u"[Analyzer] Failed to transcribe audio for %1: %2"_s.arg(imageName, words.words()));
    }
    co_return std::nullopt;
}

} // namespace ostrelle
