// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/PathReferences.h"
#include "promptserver/PromptServer.h"
#include "shell/panel/ShellParts.h"
#include "support/RecordingLog.h"
#include "support/RecordingNotifications.h"
#include "support/VirtualClock.h"

#include <QTemporaryDir>

#include "standins/MemoryDefaults.h"
#include "standins/MemorySecrets.h"

namespace ostrelle {

/// Alerts that a test answers beforehand.
class ScriptedAlerts : public Alerts {
public:
    QCoro::Task<int> show(Alert alert) override {
        shown.append(alert);
        co_return answer;
    }

    QList<Alert> shown;
    int answer = 0; ///< the index of the button that is pressed
};

/// A chooser that a test answers beforehand.
class ScriptedFileChooser : public FileChooser {
public:
    QCoro::Task<std::optional<QString>> chooseFolder(FileQuestion question) override { return one(question); }
    QCoro::Task<std::optional<QString>> chooseFile(FileQuestion question) override { return one(question); }
    QCoro::Task<QStringList> chooseFiles(FileQuestion question) override {
        asked.append(question);
        co_return answer;
    }

    QList<FileQuestion> asked;
    QStringList answer; ///< empty: the user cancels

private:
    QCoro::Task<std::optional<QString>> one(FileQuestion question) {
        asked.append(question);
        co_return answer.isEmpty() ? std::nullopt : std::optional(answer.first());
    }
};

/// A desktop that keeps what it is asked.
class RecordingWorkspace : public Workspace {
public:
    void openLink(const QUrl& link) override { links.append(link); }
    void bringToFront() override { ++raised; }

    QList<QUrl> links;
    int raised = 0;
};

/// What the views are handed, over fakes of the outside world; no model answers.
struct ShellWorld {
    QTemporaryDir folder;
    VirtualClock clock;
    FolderThreads threads;
    ImageClaims claims{folder.filePath(QStringLiteral("manifest/claims"))};
    RecordingLog console;
    MemoryDefaults defaults;
    MemorySecrets secrets;
    PathReferences references;
    UnsandboxedAccess access;
    AppEvents events;
    ScriptedAlerts alerts;
    ScriptedFileChooser files;
    RecordingWorkspace workspace;
    RecordingNotifications notificationCenter;
    NotificationManager notifications{notificationCenter, console};
    KeychainHelper keychain{secrets, console};
    SettingsStore settings{defaults, keychain, references, console};
    StatusStore status{defaults, clock};
    UsageTracker usage{defaults, clock, console};
    ProcessedFilesManifest manifest{folder.filePath(QStringLiteral("manifest/processed_files.json")), threads,
                                    clock, console, events};
    OpenAIClient openAI{QUrl(QStringLiteral("http://127.0.0.1:9")), defaults, console, clock};
    PromptServer promptServer{{}, builtInTemplates()};
    PromptService prompts{
        {promptServer.url(), {}}, folder.filePath(QStringLiteral("prompt-cache.json")), console, clock};
    AnalyzerLog log{folder.filePath(QStringLiteral("data")), console, clock};
    PreviewCopies previews{folder.filePath(QStringLiteral("data/OpenAI_Previews"))};
    CaptionTurns turns;
    Analyzer analyzer{{.settings = settings,
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
                       .threads = threads,
                       .claims = claims}};
    ShellParts parts{.settings = settings,
                     .status = status,
                     .usage = usage,
                     .defaults = defaults,
                     .prompts = prompts,
                     .analyzer = analyzer,
                     .turns = turns,
                     .notifications = notifications,
                     .threads = threads,
                     .access = access,
                     .files = files,
                     .alerts = alerts,
                     .events = events,
                     .workspace = workspace,
                     .clock = clock,
                     .console = console};
};

} // namespace ostrelle
