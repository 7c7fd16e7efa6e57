// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/AudioNote.h"

#include "core/Attempt.h"
#include "pipeline/FolderWork.h"

#include <QFileInfo>
#include <array>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr std::array audioExtensions = {"wav"_L1, "mp3"_L1, "m4a"_L1, "aac"_L1, "aiff"_L1, "flac"_L1};

} // namespace

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

QCoro::Task<std::optional<QString>> transcribeAudioNote(AnalyzerParts parts, QString image) {
    auto look = [image] { return audioNotesOf(image); };
    QThreadPool* reader = parts.threads.of(QFileInfo(image).path());
    const QStringList notes = co_await onThreadOf(parts.threads, image, look);
    for (const QString& note : notes) {
        parts.log.appendToLog(u"[Analyzer] Found audio file: "_s + QFileInfo(note).fileName());
        const auto words = co_await attempt(parts.openAI.transcribeAudio(note, reader));
        if (words) {
            parts.log.appendToLog(u"[Analyzer] Audio transcription (%1): %2"_s.arg(
                parts.settings.prioritizeAudioFiles() ? u"PRIORITY"_s : u"CONTEXT"_s, *words));
            co_return words->trimmed().isEmpty() ? std::nullopt : std::optional(*words);
        }
        parts.log.appendToLog(u"[Analyzer] Failed to transcribe audio for %1: %2"_s.arg(
            QFileInfo(image).fileName(), words.words()));
    }
    co_return std::nullopt;
}

} // namespace ostrelle
