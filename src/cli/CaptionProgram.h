// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/NoSecrets.h"
#include "cli/Options.h"
#include "cli/RunOnlyDefaults.h"
#include "cli/TerminalAlerts.h"
#include "pipeline/Analyzer.h"
#include "platform/AppFolders.h"
#include "platform/ConsoleLog.h"
#include "platform/DesktopNotificationCenter.h"
#include "platform/JsonDefaultsStore.h"
#include "platform/PathReferences.h"
#include "platform/ServiceEndpoints.h"
#include "platform/SystemClock.h"
#include "promptserver/PromptServer.h"

#include <QCoroTask>
#include <QString>
#include <optional>

namespace ostrelle {

/// The composition root of `ostrelle-caption`: every object of the pipeline, made once and handed on. What a
/// command needs of it is public.
class CaptionProgram {
public:
    CaptionProgram(const Options& options, const AppFolders& folders, const ServiceEndpoints& endpoints);
    CaptionProgram(const CaptionProgram&) = delete;
    CaptionProgram& operator=(const CaptionProgram&) = delete;

    /// What is missing before anything can be captioned; empty when nothing is.
    QString missingConfiguration() const;
    /// Waits for what is still being saved and says whether all results could be told.
    QCoro::Task<bool> finish();

    const Options options;
    ConsoleLog output;
    ConsoleLog errors{stderr};
    SilentLog silent;
    /// Standard output or nothing at all: the log lines of the pipeline are for those who want them.
    PlainLog& console{options.verbose ? static_cast<PlainLog&>(output) : silent};

    SystemClock clock;
    JsonDefaultsStore defaults;
    RunOnlyDefaults runOnly{defaults};
    PathReferences references;
    NoSecrets secrets;
    UnsandboxedAccess access;
    AppEvents events;
    TerminalAlerts alerts{errors};
    DesktopNotificationCenter notificationCenter;
    NotificationManager notifications{notificationCenter, console};
    AnalyzerLog log;
    PreviewCopies previews;
    KeychainHelper keychain{secrets, errors};
    SettingsStore settings;
    StatusStore status{defaults, clock};
    UsageTracker usage{defaults, clock, console};
    ProcessedFilesManifest manifest;
    std::optional<PromptServer> promptServer;
    PromptAccess promptAccess;
    PromptService prompts;
    OpenAIClient openAI;
    CaptionTurns turns;
    Analyzer analyzer;

private:
    DefaultsStore& withRunOnlyValues();
    void takeIngestFolder(const QString& folder);
    PromptAccess accessToPrompts(const ServiceEndpoints& endpoints);
};

} // namespace ostrelle
