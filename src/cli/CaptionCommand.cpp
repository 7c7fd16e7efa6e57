// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/CaptionCommand.h"

#include "cli/ExitStatus.h"
#include "cli/NoSecrets.h"
#include "cli/ProgressBar.h"
#include "cli/ReportPrinter.h"
#include "cli/RunOnlyDefaults.h"
#include "cli/TerminalAlerts.h"
#include "core/Attempt.h"
#include "pipeline/Analyzer.h"
#include "platform/ApiKey.h"
#include "platform/ConsoleLog.h"
#include "platform/JsonDefaultsStore.h"
#include "platform/PathReferences.h"
#include "platform/SystemClock.h"
#include "promptserver/PromptServer.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QMetaObject>
#include <cstdio>
#include <optional>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// The composition root of a run: every object of the pipeline, made once and handed on.
class CaptionRun : public QObject {
public:
    CaptionRun(const Options& options, const AppFolders& folders, const ServiceEndpoints& endpoints)
        : m_options(options)
        , m_defaults(folders.defaultsFile(), m_errors)
        , m_log(folders.data, consoleLog(), m_clock)
        , m_previews(folders.data + u"/OpenAI_Previews"_s)
        , m_keychain(m_secrets, m_errors)
        , m_settings(withRunOnlyValues(), m_keychain, m_references, consoleLog())
        , m_status(m_defaults, m_clock)
        , m_usage(m_defaults, m_clock, consoleLog())
        , m_promptAccess(promptAccess(endpoints))
        , m_prompts(m_promptAccess, folders.promptCache + u"/prompt-cache.json"_s, consoleLog(), m_clock)
        , m_openAI(endpoints.model, m_defaults, consoleLog(), m_clock)
        , m_analyzer({.settings = m_settings,
                      .status = m_status,
                      .usage = m_usage,
                      .openAI = m_openAI,
                      .prompts = m_prompts,
                      .defaults = m_defaults,
                      .log = m_log,
                      .previews = m_previews,
                      .access = m_access,
                      .alerts = m_alerts,
                      .events = m_events,
                      .clock = m_clock,
                      .progressLinger = std::chrono::milliseconds(0)}) {
        connect(&m_analyzer, &Analyzer::imageFinished, this, &CaptionRun::tell);
    }

    /// What is missing before anything can be captioned; empty when nothing is.
    QString missingConfiguration() const {
        if (m_options.roster && !QFileInfo(*m_options.roster).isFile()) {
            return u"There is no Code Replacements file at %1."_s.arg(*m_options.roster);
        }
        if (m_options.command == Options::Command::showPrompt) {
            return {}; // nothing is sent, and a roster may lie in the ingest folder
        }
        if (apiKey(m_defaults).isEmpty()) {
            return u"No API key is stored. Store it with: ostrelle-caption key"_s;
        }
        if (!m_settings.codeReplacementsFile()) {
            return u"No Code Replacements file is set. Name one with: --roster FILE"_s;
        }
        return {};
    }

    /// Captions all files and ends the event loop with the exit status.
    QCoro::Task<> run() {
        const auto done = co_await attempt(captionAll());
        co_await m_prompts.finishPending();
        m_bar.clear();
        if (!done) {
            m_errors.print(u"ostrelle-caption: "_s + done.words());
        }
        const bool isTold = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
        if (!isTold) {
            m_errors.print(u"ostrelle-caption: Not all results could be written to standard output."_s);
        }
        const bool isSuccess = done && isTold && !m_hasFailure;
        QCoreApplication::exit(isSuccess ? ExitStatus::success : ExitStatus::fileFailed);
    }

private:
    QCoro::Task<> captionAll() {
        const QStringList files = m_options.files;
        for (qsizetype index = 0; index < files.size(); ++index) {
            const QFileInfo file(files[index]);
            m_bar.show(index, file.fileName());
            if (!file.isFile()) {
                ImageReport report;
                report.file = files[index];
                report.reason =
                    file.isDir() ? u"It is a folder, not an image."_s : u"There is no such file."_s;
                tell(report);
                continue;
            }
            if (m_options.command == Options::Command::showPrompt) {
                co_await showPrompt(files[index]);
                continue;
            }
            m_status.setTotalFiles(files.size());
            m_status.setCurrentFileIndex(index + 1);
            co_await m_analyzer.analyzeSingle(files[index]);
        }
    }

    QCoro::Task<> showPrompt(QString file) {
        const auto prompt = co_await attempt(m_analyzer.promptFor(file));
        m_bar.clear();
        if (prompt) {
            m_output.print(*prompt);
        } else {
            m_hasFailure = true;
            m_errors.print(u"ostrelle-caption: %1: %2"_s.arg(file, prompt.words()));
        }
    }

    /// Without a prompt service of somebody's own, the program serves the built-in templates to itself.
    PromptAccess promptAccess(const ServiceEndpoints& endpoints) {
        if (!endpoints.prompt.isEmpty()) {
            return {.url = endpoints.prompt, .key = endpoints.promptKey};
        }
        PromptServerOptions options;
        options.apiKey = endpoints.promptKey;
        m_promptServer.emplace(options, builtInTemplates());
        return {.url = m_promptServer->url(), .key = endpoints.promptKey};
    }

    PlainLog& consoleLog() { return m_options.verbose ? static_cast<PlainLog&>(m_output) : m_silent; }

    /// Before the settings are read, the options take the place of what is stored. What the settings store
    /// tidies up at its start stays in this run: that is the desktop program's to do.
    DefaultsStore& withRunOnlyValues() {
        if (m_options.style) {
            m_runOnly.set(u"captionStyle"_s, rawValue(*m_options.style));
        }
        if (m_options.sport) {
            m_runOnly.set(u"sport"_s, rawValue(*m_options.sport));
        }
        if (m_options.roster && QFileInfo(*m_options.roster).isFile()) {
            m_runOnly.set(u"codeReplacementsFile"_s, m_references.make(*m_options.roster));
        }
        if (m_options.overwrite != Options::Overwrite::asSet) {
            m_runOnly.set(u"alwaysOverwriteCaptions"_s, m_options.overwrite == Options::Overwrite::always);
        }
        return m_runOnly;
    }

    void tell(const ImageReport& report) {
        m_hasFailure = m_hasFailure || report.outcome == ImageReport::Outcome::failed;
        m_bar.clear();
        m_output.print(m_options.json ? reportJson(report) : reportText(report));
    }

    Options m_options;
    ConsoleLog m_output;
    ConsoleLog m_errors{stderr};
    SilentLog m_silent;
    ProgressBar m_bar{stderr, m_options.verbose ? 0 : m_options.files.size()}; // log lines tell as much
    bool m_hasFailure = false;

    SystemClock m_clock;
    JsonDefaultsStore m_defaults;
    RunOnlyDefaults m_runOnly{m_defaults};
    PathReferences m_references;
    NoSecrets m_secrets;
    UnsandboxedAccess m_access;
    AppEvents m_events;
    TerminalAlerts m_alerts{m_errors};
    AnalyzerLog m_log;
    PreviewCopies m_previews;
    KeychainHelper m_keychain;
    SettingsStore m_settings;
    StatusStore m_status;
    UsageTracker m_usage;
    std::optional<PromptServer> m_promptServer;
    PromptAccess m_promptAccess;
    PromptService m_prompts;
    OpenAIClient m_openAI;
    Analyzer m_analyzer;
};

} // namespace

int runCaptionCommand(const Options& options, const AppFolders& folders, const ServiceEndpoints& endpoints) {
    CaptionRun run(options, folders, endpoints);
    const QString missing = run.missingConfiguration();
    if (!missing.isEmpty()) {
        ConsoleLog(stderr).print(u"ostrelle-caption: "_s + missing);
        return ExitStatus::usageOrConfiguration;
    }
    // From inside the event loop, so that a run that needs no waiting can end it.
    QMetaObject::invokeMethod(&run, [&run] { run.run(); }, Qt::QueuedConnection);
    return QCoreApplication::exec();
}

} // namespace ostrelle
