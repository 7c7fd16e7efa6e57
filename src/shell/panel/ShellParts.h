// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/Analyzer.h"
#include "pipeline/FailedImages.h"
#include "platform/Alerts.h"
#include "platform/Clock.h"
#include "platform/CommandRunner.h"
#include "platform/DefaultsStore.h"
#include "platform/FileAccess.h"
#include "platform/FileChooser.h"
#include "platform/FolderThreads.h"
#include "platform/PlainLog.h"
#include "platform/Workspace.h"
#include "product/AppEvents.h"
#include "product/NotificationManager.h"
#include "product/WebPages.h"
#include "services/KeyCheck.h"
#include "services/PromptService.h"
#include "services/UpdateChecker.h"
#include "shell/desktop/LaunchJob.h"
#include "state/AnalyticsStore.h"
#include "state/SettingsStore.h"
#include "state/StatusStore.h"
#include "state/UsageHistory.h"
#include "state/UsageTracker.h"
#include "transfer/ftp/ConnectionResult.h"

#include <QCoroTask>
#include <QString>
#include <functional>

namespace ostrelle {

/// Connects once to the server in the settings.
using ConnectionTest = std::function<QCoro::Task<ConnectionResult>()>;

/// What the windows show and act through. All of it must outlive them.
struct ShellParts {
    SettingsStore& settings;
    StatusStore& status;
    UsageTracker& usage;
    AnalyticsStore& analytics;
    UsageHistory& history;
    DefaultsStore& defaults;
    PromptService& prompts;
    KeyCheck& keyCheck;
    UpdateChecker& updates;
    Analyzer& analyzer;
    FailedImages& failures;
    AnalyzerLog& log;
    CaptionTurns& turns;
    NotificationManager& notifications;
    FolderThreads& threads;
    FileAccess& access;
    FileChooser& files;
    Alerts& alerts;
    AppEvents& events;
    Workspace& workspace;
    CommandRunner& commands;
    Clock& clock;
    PlainLog& console;
    ConnectionTest connectionTest;
    WebPages pages = {};
    LaunchPaths launch = {};
    std::function<bool()> hasTray = [] { return false; }; ///< whether the desktop shows tray icons now
};

} // namespace ostrelle
