// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/Analyzer.h"
#include "platform/FolderThreads.h"
#include "platform/ImageClaims.h"
#include "platform/PathReferences.h"
#include "product/AppFolders.h"
#include "product/ServiceEndpoints.h"
#include "promptserver/PromptServer.h"
#include "transfer/AutoModeController.h"

#include <QCoroTask>
#include <chrono>
#include <optional>

namespace ostrelle {

/// What a program brings along: its way to talk to the user, and where its settings are kept. All of it has
/// to outlive the program.
struct ProgramSurroundings {
    const AppFolders& folders;
    const ServiceEndpoints& endpoints;
    DefaultsStore& defaults;         ///< of counters and the key
    DefaultsStore& settingsDefaults; ///< of the settings
    SecretStore& secrets;
    NotificationCenter& notificationCenter;
    Alerts& alerts;
    AppEvents& events;
    RemoteSource& remote;
    FileAccess& access;
    Clock& clock;
    PlainLog& console;
    PlainLog& errors;
    /// How long a finished image's progress stays to be seen.
    std::chrono::milliseconds progressLinger = CaptionProgress::usualLinger;
};

/// The objects below the windows and the command line, each made once and handed on by reference: the
/// composition of every program that captions.
class CaptionProgram {
public:
    explicit CaptionProgram(const ProgramSurroundings& given);
    CaptionProgram(const CaptionProgram&) = delete;
    CaptionProgram& operator=(const CaptionProgram&) = delete;

    /// What the analyzer works with.
    AnalyzerParts analyzerParts();

    /// Lets no further image begin and resumes when those in the works are finished and all is saved.
    QCoro::Task<> finishWork();

private:
    const ProgramSurroundings m_given;

public:
    Clock& clock;
    ImageClaims claims; // which a thread that hangs may still use
    FolderThreads threads;
    FileAccess& access;
    PathReferences references;
    NotificationManager notifications;
    AnalyzerLog log;
    PreviewCopies previews;
    KeychainHelper keychain;
    SettingsStore settings;
    StatusStore status;
    CaptionProgress progress;
    UsageTracker usage;
    ProcessedFilesManifest manifest;
    std::optional<PromptServer> promptServer; ///< without a prompt service of somebody's own
    PromptAccess promptAccess;
    PromptService prompts;
    OpenAIClient openAI;
    CaptionTurns turns;
    Analyzer analyzer;
    ProcessingTracker tracker{clock};
    LocalFolderScan scan;
    AutoModeController autoMode;

private:
    PromptAccess accessToPrompts(const ServiceEndpoints& endpoints);

    QCoro::Task<> finishKeychain();
};

} // namespace ostrelle
