// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerLog.h"
#include "pipeline/CaptionProgress.h"
#include "pipeline/CaptionTurns.h"
#include "pipeline/PreviewCopies.h"
#include "platform/Alerts.h"
#include "platform/Clock.h"
#include "platform/DefaultsStore.h"
#include "platform/FileAccess.h"
#include "platform/FolderThreads.h"
#include "platform/ImageClaims.h"
#include "product/AppEvents.h"
#include "product/NotificationManager.h"
#include "services/OpenAIClient.h"
#include "services/PromptService.h"
#include "state/ProcessedFilesManifest.h"
#include "state/SettingsStore.h"
#include "state/UsageTracker.h"

#include "journal/Journal.h"

namespace ostrelle {

/// What the caption pipeline works with. All of it must outlive the pipeline.
struct AnalyzerParts {
    SettingsStore& settings;
    CaptionProgress& progress;
    UsageTracker& usage;
    ProcessedFilesManifest& manifest;
    OpenAIClient& openAI;
    PromptService& prompts;
    const DefaultsStore& defaults;
    AnalyzerLog& log;
    const PreviewCopies& previews;
    FileAccess& access;
    Alerts& alerts;
    NotificationManager& notifications;
    AppEvents& events;
    Clock& clock;
    CaptionTurns& turns;
    FolderThreads& threads;
    ImageClaims& claims;
    Journal& journal;
};

} // namespace ostrelle
