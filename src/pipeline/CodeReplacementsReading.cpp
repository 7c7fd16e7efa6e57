// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/CodeReplacementsReading.h"

#include "core/Attempt.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

QCoro::Task<CodeReplacements> readRoster(AnalyzerParts parts, RosterFailure failure) {
    auto look = [selected = parts.settings.codeReplacementsFile(), folder = parts.settings.ingestFolder()] {
        return resolveCodeReplacementsFile(selected, folder);
    };
    const auto file = co_await offMainThread(look);
    if (!file) {
        parts.log.appendToLog(u"[Analyzer] No code replacements file found (neither manually selected nor "
                              "auto-discovered)"_s);
        co_return {};
    }
    parts.log.appendToLog(u"[Analyzer] Using %1 code replacements file: %2"_s.arg(
        file->isManuallySelected ? u"manually selected"_s : u"auto-discovered"_s, file->path));
    const ScopedAccess access(parts.access, file->path);
    auto read = [path = file->path] { return readCodeReplacements(path); };
    const auto replacements = co_await attemptOffMainThread(read);
    if (!replacements && failure == RosterFailure::logged) {
        parts.log.printAndAppend(u"[Analyzer] Failed to read Code Replacements file: "_s +
                                 replacements.words());
    }
    co_return replacements.valueOr({});
}

} // namespace ostrelle
