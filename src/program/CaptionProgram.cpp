// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/CaptionProgram.h"

#include "platform/Patience.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::seconds keyringPatience(5);
constexpr std::chrono::seconds sharePatience(2); // for a network share that may hang

} // namespace

CaptionProgram::CaptionProgram(const ProgramSurroundings& given)
    : claims(given.folders.claimsFile())
    , notifications(given.notificationCenter, given.console)
    , log(given.folders.data, given.console, clock)
    , previews(given.folders.data + u"/OpenAI_Previews"_s)
    , keychain(given.secrets, given.errors)
    , settings(given.settingsDefaults, keychain, references, given.console)
    , status(given.defaults, clock)
    , usage(given.defaults, clock, given.console)
    , manifest(given.folders.manifestFile(), threads, clock, given.console, given.events)
    , promptAccess(accessToPrompts(given.endpoints))
    , prompts(promptAccess, given.folders.promptCache + u"/prompt-cache.json"_s, given.console, clock)
    , openAI(given.endpoints.model, given.defaults, given.console, clock)
    , analyzer({.settings = settings,
                .status = status,
                .usage = usage,
                .manifest = manifest,
                .openAI = openAI,
                .prompts = prompts,
                .defaults = given.defaults,
                .log = log,
                .previews = previews,
                .access = access,
                .alerts = given.alerts,
                .notifications = notifications,
                .events = given.events,
                .clock = clock,
                .turns = turns,
                .threads = threads,
                .claims = claims,
                .progressLinger = given.progressLinger})
    , scan({.settings = settings,
            .manifest = manifest,
            .tracker = tracker,
            .access = access,
            .turns = turns,
            .threads = threads,
            .clock = clock,
            .log = given.console,
            .captioning = [this](ImageRequest request) { return analyzer.captionWatched(request); },
            .onFailure = [this](const ImageReport& report) { analyzer.announceFailure(report); }})
    , autoMode({.settings = settings,
                .status = status,
                .defaults = given.defaults,
                .scan = scan,
                .remote = given.remote,
                .notifications = notifications,
                .threads = threads,
                .clock = clock,
                .log = given.console})
    , m_defaults(given.defaults)
    , m_settingsDefaults(given.settingsDefaults)
    , m_errors(given.errors) {
    const auto tellOfManifest = [this] {
        const QString failure = manifest.savingFailure();
        status.setManifestFailure(failure.isEmpty() ? std::nullopt : std::optional(failure));
    };
    QObject::connect(&manifest, &ProcessedFilesManifest::savingFailureChanged, &status, tellOfManifest);
}

QCoro::Task<> CaptionProgram::finishWork() {
    turns.close();
    autoMode.updateAutoMode(false, settings.sourceType(), std::nullopt);
    co_await scan.finished();
    co_await turns.idle();
    co_await prompts.finishPending();
    co_await endsWithin(settings.pathsSettled(), clock, sharePatience);
    co_await finishKeychain();
    co_await m_defaults.finished(); // last: what ended above has changed counters
    co_await m_settingsDefaults.finished();
}

/// A keyring may ask the user first, who may have left: the program must end all the same.
QCoro::Task<> CaptionProgram::finishKeychain() {
    if (!keychain.isSaving()) {
        co_return;
    }
    const bool isFinished = co_await endsWithin(keychain.finishPending(), clock, keyringPatience);
    if (!isFinished) {
        m_errors.print(
            u"[KeychainHelper] The keyring does not answer: the password that was entered last may "
            "not be saved."_s);
    }
}

PromptAccess CaptionProgram::accessToPrompts(const ServiceEndpoints& endpoints) {
    if (!endpoints.prompt.isEmpty()) {
        return {.url = endpoints.prompt, .key = endpoints.promptKey};
    }
    PromptServerOptions options;
    options.apiKey = randomPromptKey();
    promptServer.emplace(options, builtInTemplates());
    return {.url = promptServer->url(), .key = options.apiKey};
}

} // namespace ostrelle
