// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/CodeReplacementsReading.h"

#include "core/Attempt.h"
#include "core/OnThreadPool.h"

#include <QFileInfo>
#include <optional>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// The roster's file and its contents, from one visit to its folder.
struct FoundRoster {
    std::optional<CodeReplacementsFile> file;
    Attempt<CodeReplacements> replacements = Attempt<CodeReplacements>::success({});
};

FoundRoster findRoster(const std::optional<QString>& selected, const std::optional<QString>& folder) {
    FoundRoster found;
    found.file = resolveCodeReplacementsFile(selected, folder);
    if (found.file) {
        found.replacements = attemptNow([&found] { return readCodeReplacements(found.file->path); });
    }
    return found;
}

/// Why the names of the roster are not used; empty when they are.
QString problemOf(const FoundRoster& found) {
    const QString name = QFileInfo(found.file->path).fileName();
    if (found.replacements) {
        return found.replacements->characterCount == 0 ? rosterProblem(*found.replacements, name) : QString();
    }
    const auto error = found.replacements.failureAs<FileError>();
    return error ? rosterProblem(*error, name) : QString();
}

} // namespace

QCoro::Task<RosterReading> readRoster(const SettingsStore& settings, FolderThreads& threads,
                                      FileAccess& access, AnalyzerLog& log, RosterFailure failure) {
    const std::optional<QString> selected = settings.codeReplacementsFile();
    const std::optional<QString> folder = settings.ingestFolder();
    FoundRoster found;
    if (selected || folder) {
        const ScopedAccess fileAccess(access, selected ? *selected : *folder);
        const QString place = selected ? QFileInfo(*selected).path() : *folder;
        auto find = [selected, folder] { return findRoster(selected, folder); };
        found = co_await onThreadPool(threads.of(place), find);
    }
    if (!found.file) {
        log.appendToLog(u"[Analyzer] No code replacements file found (neither manually selected nor "
                        "auto-discovered)"_s);
        co_return {.replacements = {},
                   .warnings = {u"There is no roster: the caption was made without its names."_s}};
    }
    log.appendToLog(u"[Analyzer] Using %1 code replacements file: %2"_s.arg(
        found.file->isManuallySelected ? u"manually selected"_s : u"auto-discovered"_s, found.file->path));
    if (!found.replacements && failure == RosterFailure::logged) {
        log.printAndAppend(u"[Analyzer] Failed to read Code Replacements file: "_s +
                           found.replacements.words());
    }
    const QString problem = problemOf(found);
    co_return {.replacements = found.replacements.valueOr({}),
               .warnings = problem.isEmpty() ? QStringList() : QStringList{problem}};
}

} // namespace ostrelle
