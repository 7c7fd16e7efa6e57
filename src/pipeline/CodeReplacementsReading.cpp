// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/CodeReplacementsReading.h"

#include "core/Attempt.h"
#include "pipeline/FolderWork.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// On the thread of the folder that is searched, if one is.
QCoro::Task<std::optional<CodeReplacementsFile>> findRoster(AnalyzerParts parts) {
    const std::optional<QString> selected = parts.settings.codeReplacementsFile();
    const std::optional<QString> folder = parts.settings.ingestFolder();
    if (selected || !folder) {
        co_return resolveCodeReplacementsFile(selected, std::nullopt);
    }
    auto look = [folder] { return resolveCodeReplacementsFile(std::nullopt, folder); };
    co_return co_await onThreadPool(parts.threads.of(*folder), look);
}

} // namespace

QCoro::Task<RosterReading> readRoster(AnalyzerParts parts, RosterFailure failure) {
    const std::optional<CodeReplacementsFile> file = co_await findRoster(parts);
    if (!file) {
        parts.log.appendToLog(u"[Analyzer] No code replacements file found (neither manually selected nor "
                              "auto-discovered)"_s);
        co_return {.replacements = {},
                   .warnings = {u"There is no roster: the caption was made without its names."_s}};
    }
    parts.log.appendToLog(u"[Analyzer] Using %1 code replacements file: %2"_s.arg(
        file->isManuallySelected ? u"manually selected"_s : u"auto-discovered"_s, file->path));
    const ScopedAccess access(parts.access, file->path);
    auto read = [path = file->path] { return readCodeReplacements(path); };
    const auto replacements = co_await attempt(onThreadOf(parts.threads, file->path, read));
    const QString name = QFileInfo(file->path).fileName();
    RosterReading reading{.replacements = replacements.valueOr({}), .warnings = {}};
    if (const auto error = replacements ? std::nullopt : replacements.failureAs<FileError>()) {
        reading.warnings = {rosterProblem(*error, name)};
    } else if (reading.replacements.characterCount == 0) {
        reading.warnings = {rosterProblem(reading.replacements, name)};
    }
    if (!replacements && failure == RosterFailure::logged) {
        parts.log.printAndAppend(u"[Analyzer] Failed to read Code Replacements file: "_s +
                                 replacements.words());
    }
    co_return reading;
}

} // namespace ostrelle
