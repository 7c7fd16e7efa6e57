// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/CaptionProgram.h"

#include "pipeline/CodeReplacements.h"
#include "platform/ApiKey.h"

#include <QFileInfo>
#include <cstdio>

namespace ostrelle {

using namespace Qt::StringLiterals;

CaptionProgram::CaptionProgram(const Options& givenOptions, const AppFolders& folders,
                               const ServiceEndpoints& endpoints)
    : options(givenOptions)
    , defaults(folders.defaultsFile(), errors)
    , log(folders.data, console, clock)
    , previews(folders.data + u"/OpenAI_Previews"_s)
    , settings(withRunOnlyValues(), keychain, references, console)
    , manifest(folders.manifestFile(), clock, console, events)
    , promptAccess(accessToPrompts(endpoints))
    , prompts(promptAccess, folders.promptCache + u"/prompt-cache.json"_s, console, clock)
    , openAI(endpoints.model, defaults, console, clock)
    , analyzer({.settings = settings,
                .status = status,
                .usage = usage,
                .manifest = manifest,
                .openAI = openAI,
                .prompts = prompts,
                .defaults = defaults,
                .log = log,
                .previews = previews,
                .access = access,
                .alerts = alerts,
                .notifications = notifications,
                .events = events,
                .clock = clock,
                .turns = turns,
                .progressLinger = std::chrono::milliseconds(0)}) {}

QString CaptionProgram::missingConfiguration() const {
    if (options.roster && !QFileInfo(*options.roster).isFile()) {
        return u"There is no Code Replacements file at %1."_s.arg(*options.roster);
    }
    if (options.folder && !QFileInfo(*options.folder).isDir()) {
        return u"There is no folder at %1."_s.arg(*options.folder);
    }
    if (options.command == Options::Command::showPrompt) {
        return {}; // nothing is sent, and a roster may lie in the ingest folder
    }
    if (apiKey(defaults).isEmpty()) {
        return u"No API key is stored. Store it with: ostrelle-caption key"_s;
    }
    if (!hasCodeReplacementsFile(settings.codeReplacementsFile(), options.folder.value_or(QString()))) {
        return u"No Code Replacements file is set. Name one with: --roster FILE"_s;
    }
    return {};
}

QCoro::Task<bool> CaptionProgram::finish() {
    co_await prompts.finishPending();
    const bool isTold = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
    if (!isTold) {
        errors.print(u"ostrelle-caption: Not all results could be written to standard output."_s);
    }
    co_return isTold;
}

/// Without a prompt service of somebody's own, the program serves the built-in templates to itself.
PromptAccess CaptionProgram::accessToPrompts(const ServiceEndpoints& endpoints) {
    if (!endpoints.prompt.isEmpty()) {
        return {.url = endpoints.prompt, .key = endpoints.promptKey};
    }
    PromptServerOptions serverOptions;
    serverOptions.apiKey = randomPromptKey();
    promptServer.emplace(serverOptions, builtInTemplates());
    return {.url = promptServer->url(), .key = serverOptions.apiKey};
}

/// Before the settings are read, the options take the place of what is stored. What the settings store
/// tidies up at its start stays in this run: that is the desktop program's to do.
DefaultsStore& CaptionProgram::withRunOnlyValues() {
    if (options.style) {
        runOnly.set(u"captionStyle"_s, rawValue(*options.style));
    }
    if (options.sport) {
        runOnly.set(u"sport"_s, rawValue(*options.sport));
    }
    if (options.overwrite != Options::Overwrite::asSet) {
        runOnly.set(u"alwaysOverwriteCaptions"_s, options.overwrite == Options::Overwrite::always);
    }
    if (options.folder && QFileInfo(*options.folder).isDir()) {
        takeIngestFolder(*options.folder);
    }
    if (options.roster && QFileInfo(*options.roster).isFile()) {
        runOnly.set(u"codeReplacementsFile"_s, references.make(*options.roster));
    }
    return runOnly;
}

/// The folder takes the place of the user's ingest folder; watching it wants a roster that is set, so one
/// that lies in it is.
void CaptionProgram::takeIngestFolder(const QString& folder) {
    const bool isWatching = options.command == Options::Command::watchFolder;
    runOnly.set(u"ingestFolder"_s, references.make(folder));
    runOnly.set(u"sourceType"_s, rawValue(SourceType::local));
    runOnly.set(u"autoMode"_s, isWatching);
    const std::optional<QString> roster = findCodeReplacementsFile(folder);
    if (isWatching && roster && defaults.value(u"codeReplacementsFile"_s).isNull()) {
        runOnly.set(u"codeReplacementsFile"_s, references.make(*roster));
    }
}

} // namespace ostrelle
