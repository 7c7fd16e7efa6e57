// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/Analyzer.h"
#include "pipeline/FailedImages.h"
#include "platform/FolderThreads.h"
#include "platform/ImageClaims.h"
#include "platform/PathReferences.h"
#include "product/AppFolders.h"
#include "product/ServiceEndpoints.h"
#include "promptserver/PromptServer.h"
#include "services/KeyCheck.h"
#include "services/MeasurementProtocol.h"
#include "services/UsageReportClient.h"
#include "state/AnalyticsStore.h"
#include "state/UsageHistory.h"
#include "transfer/AutoModeController.h"
#include "transfer/remote/ServerSource.h"

#include <QCoroTask>
#include <chrono>
#include <optional>

namespace ostrelle {

/// What each program provides: its ways to reach the user, its stores and its clock. All of it must outlive
/// the CaptionProgram.
struct ProgramSurroundings {
    const AppFolders& folders;
    const ServiceEndpoints& endpoints;
    DefaultsStore& defaults;         ///< for the counters and the API key
    DefaultsStore& settingsDefaults; ///< for the settings
    SecretStore& secrets;
    NotificationCenter& notificationCenter;
    Alerts& alerts;
    AppEvents& events;
    FtpStreamMaker makeStream; ///< from FTP servers
    FileAccess& access;
    Clock& clock;
    PlainLog& console;
    PlainLog& errors;
    /// How long a finished image's progress stays on show.
    std::chrono::milliseconds progressLinger = CaptionProgress::usualLinger;
};

/// The composition of every program that captions: the objects below the windows and the command line, each
/// made once and passed on by reference.
class CaptionProgram {
public:
    explicit CaptionProgram(const ProgramSurroundings& given);
    CaptionProgram(const CaptionProgram&) = delete;
    CaptionProgram& operator=(const CaptionProgram&) = delete;

    /// What the analyzer works with.
    AnalyzerParts analyzerParts();

    /// Lets no further image begin. Resumes when those in the works are finished and all is saved, except
    /// paths and the password if a network share or the keyring does not answer in time.
    QCoro::Task<> finishWork();

    /// Removes what is known of captions from before that time: entries of the journal, lines of the log and
    /// copies of pictures. Returns how many captions the journal had. Throws JournalError or FileError.
    QCoro::Task<qint64> forget(QDateTime before);

private:
    const ProgramSurroundings m_given;

public:
    Clock& clock;
    ImageClaims claims; // before the threads, as one that hangs may still use it
    FolderThreads threads;
    FileAccess& access;
    PathReferences references;
    NotificationManager notifications;
    AnalyzerLog log;
    PreviewCopies previews;
    Journal journal;
    KeychainHelper keychain;
    SettingsStore settings;
    StatusStore status;
    CaptionProgress progress;
    UsageTracker usage;
    UsageHistory history;
    MeasurementProtocol measurement;
    UsageReportClient usageReports;
    AnalyticsStore analytics;
    ProcessedFilesManifest manifest;
    std::optional<PromptServer> promptServer; ///< unless the endpoints name another prompt service
    PromptAccess promptAccess;
    PromptService prompts;
    OpenAIClient openAI;
    KeyCheck keyCheck{openAI, m_given.defaults};
    CaptionTurns turns;
    Analyzer analyzer;
    FailedImages failures;
    ProcessingTracker tracker{clock};
    QueueCount queue{status, usage, clock};
    LocalFolderScan scan;
    FetchedImages fetched;
    DownloadedImages downloads;
    ServerSource server;
    AutoModeController autoMode;

private:
    void recordOutcome(OutcomeKind kind);
    PromptAccess accessToPrompts(const ServiceEndpoints& endpoints);

    QCoro::Task<> finishKeychain();
};

} // namespace ostrelle
