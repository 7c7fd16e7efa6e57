// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/CaptionProgram.h"

#include "core/OffMainThread.h"
#include "pipeline/PromptComposition.h"
#include "platform/Patience.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::seconds keyringPatience(5);
constexpr std::chrono::seconds sharePatience(2); // for a network share that may hang

} // namespace

CaptionProgram::CaptionProgram(const ProgramSurroundings& given)
    : m_given(given)
    , clock(given.clock)
    , claims(given.folders.claimsFile())
    , access(given.access)
    , notifications(given.notificationCenter, given.console)
    , log(given.folders.data, given.console, clock)
    , previews(given.folders.data + u"/OpenAI_Previews"_s)
    , journal(given.folders.data + u"/Journal.sqlite"_s, clock, given.errors)
    , keychain(given.secrets, given.errors)
    , settings(given.settingsDefaults, keychain, references, given.console)
    , status(given.defaults, clock)
    , progress(status, log, clock, given.progressLinger)
    , usage(given.defaults, clock, given.console)
    , history(given.defaults, clock)
    , measurement({.url = given.endpoints.measurement,
                   .measurementId = given.endpoints.measurementId,
                   .secret = given.endpoints.measurementSecret},
                  given.defaults, clock)
    , usageReports(given.endpoints.analytics, given.endpoints.analyticsKey, clock)
    , analytics(given.defaults, clock, given.console, measurement, usageReports)
    , manifest(given.folders.manifestFile(), threads, clock, given.console, given.events)
    , promptAccess(accessToPrompts(given.endpoints))
    , prompts(promptAccess, given.folders.promptCache + u"/prompt-cache.json"_s, given.console, clock)
    , openAI(given.endpoints.model, given.defaults, given.console, clock)
    , analyzer(analyzerParts())
    , scan({.settings = settings,
            .manifest = manifest,
            .tracker = tracker,
            .access = access,
            .turns = turns,
            .count = queue,
            .threads = threads,
            .clock = clock,
            .log = given.console,
            .captioning = [this](ImageRequest request) { return analyzer.captionWatched(request); },
            .onFailure = [this](const ImageOutcome& image) { analyzer.announceFailure(image); },
            .onLooked = [this](const std::optional<QString>& trouble) { status.setSourceTrouble(trouble); }})
    , fetched(given.defaults)
    , downloads({.manifest = manifest,
                 .tracker = tracker,
                 .progress = progress,
                 .status = status,
                 .notifications = notifications,
                 .turns = turns,
                 .access = access,
                 .threads = threads,
                 .claims = claims,
                 .clock = clock,
                 .log = given.console,
                 .captioning = [this](const QString& file) { return analyzer.captionDownloaded(file); },
                 .onFailure = [this](const ImageOutcome& image) { analyzer.announceFailure(image); }})
    , server({.settings = settings,
              .status = status,
              .manifest = manifest,
              .images = downloads,
              .fetched = fetched,
              .claims = claims,
              .makeStream = given.makeStream,
              .access = access,
              .threads = threads,
              .clock = clock,
              .log = given.console,
              .usualFolder = given.folders.downloads(),
              .onPolled = [this] { autoMode.restartCountdown(); }})
    , autoMode({.settings = settings,
                .status = status,
                .defaults = given.defaults,
                .scan = scan,
                .remote = server,
                .notifications = notifications,
                .threads = threads,
                .clock = clock,
                .log = given.console}) {
    const auto showManifestFailure = [this] {
        const QString failure = manifest.savingFailure();
        status.setManifestFailure(failure.isEmpty() ? std::nullopt : std::optional(failure));
    };
    QObject::connect(&manifest, &ProcessedFilesManifest::savingFailureChanged, &status, showManifestFailure);
    QObject::connect(&analyzer, &Analyzer::imageFinished, &status, [this](const ImageOutcome& image) {
        failures.take(image);
        recordOutcome(image.kind);
        if (const auto refusal = serviceRefusal(image.cause); refusal && !refusal->isRateLimit) {
            keyCheck.hearRefusal();
        }
        if (isDone(image.kind)) {
            fetched.remove(image.file); // whoever had it captioned
        }
    });
    QObject::connect(&usage, &UsageTracker::recorded, &history,
                     [this](double dollars) { history.recordCost(captionModel, dollars); });
    QObject::connect(&status, &StatusStore::imageProcessed, &analytics,
                     &AnalyticsStore::recordImageProcessed);
    QObject::connect(&status, &StatusStore::batchFinished, &analytics, [this](const BatchTiming& timing) {
        measurement.logEvent(u"batch_processed"_s, {{u"image_count"_s, timing.imageCount},
                                                    {u"total_time_seconds"_s, timing.totalSeconds},
                                                    {u"time_per_image_seconds"_s, timing.secondsPerImage},
                                                    {u"average_time_seconds"_s, timing.averageSeconds}});
    });
    QObject::connect(&given.events, &AppEvents::triggerManualFTPDownload, &status,
                     [this] { server.downloadAll(); });
}

void CaptionProgram::recordOutcome(OutcomeKind kind) {
    if (kind == OutcomeKind::captioned) {
        history.recordOutcome(u"captioned"_s);
    } else if (isFailure(kind)) {
        history.recordOutcome(u"failed"_s);
    } else if (kind != OutcomeKind::notBegun) {
        history.recordOutcome(u"left as they were"_s);
    }
}

AnalyzerParts CaptionProgram::analyzerParts() {
    return {.settings = settings,
            .progress = progress,
            .usage = usage,
            .manifest = manifest,
            .openAI = openAI,
            .prompts = prompts,
            .defaults = m_given.defaults,
            .log = log,
            .previews = previews,
            .access = access,
            .alerts = m_given.alerts,
            .notifications = notifications,
            .events = m_given.events,
            .clock = clock,
            .turns = turns,
            .threads = threads,
            .claims = claims,
            .journal = journal};
}

QCoro::Task<> CaptionProgram::finishWork() {
    turns.close();
    server.abandon();
    autoMode.updateAutoMode(false, settings.sourceType(), std::nullopt);
    co_await scan.finished();
    co_await server.finished();
    co_await turns.idle();
    co_await prompts.finishPending();
    co_await journal.finished();
    co_await endsWithin(settings.pathsSettled(), clock, sharePatience);
    co_await finishKeychain();
    co_await m_given.defaults.finished(); // last, as the work above has changed counters
    co_await m_given.settingsDefaults.finished();
}

QCoro::Task<qint64> CaptionProgram::forget(QDateTime before) {
    auto remove = [logFile = log.path(), copies = previews, before] {
        copies.forget(before);
        AnalyzerLog::forget(logFile, before);
    };
    co_await offMainThread(remove);
    co_return co_await journal.forget(before);
}

/// A keyring may ask the user first, who may have left; the program must end nevertheless.
QCoro::Task<> CaptionProgram::finishKeychain() {
    if (!keychain.isSaving()) {
        co_return;
    }
    const bool isFinished = co_await endsWithin(keychain.finishPending(), clock, keyringPatience);
    if (!isFinished) {
        m_given.errors.print(
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
