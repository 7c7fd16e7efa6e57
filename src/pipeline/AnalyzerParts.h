// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/RAWPreviewExtractor.h"
#include "metadata/XMPWriter.h"
#include "pipeline/AnalyzerLog.h"
#include "pipeline/PreviewCopies.h"
#include "platform/Alerts.h"
#include "platform/AppEvents.h"
#include "platform/Clock.h"
#include "platform/DefaultsStore.h"
#include "platform/FileAccess.h"
#include "services/OpenAIClient.h"
#include "services/PromptService.h"
#include "state/SettingsStore.h"
#include "state/StatusStore.h"
#include "state/UsageTracker.h"

#include <chrono>

namespace ostrelle {

/// What the caption pipeline works with. All of it has to outlive the pipeline.
struct AnalyzerParts {
    SettingsStore& settings;
    StatusStore& status;
    UsageTracker& usage;
    OpenAIClient& openAI;
    PromptService& prompts;
    const DefaultsStore& defaults;
    AnalyzerLog& log;
    const PreviewCopies& previews;
    FileAccess& access;
    Alerts& alerts;
    AppEvents& events;
    Clock& clock;
    RAWPreviewExtractor previewer = {};
    XMPWriter xmp = {};
    /// How long a finished image's progress stays to be seen.
    std::chrono::milliseconds progressLinger = std::chrono::seconds(2);
};

} // namespace ostrelle
