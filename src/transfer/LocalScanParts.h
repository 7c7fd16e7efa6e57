// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/CaptionTurns.h"
#include "pipeline/ImageOutcome.h"
#include "pipeline/ImageRequest.h"
#include "pipeline/ProcessingTracker.h"
#include "platform/Clock.h"
#include "platform/FileAccess.h"
#include "platform/FolderThreads.h"
#include "platform/PlainLog.h"
#include "state/ProcessedFilesManifest.h"
#include "state/QueueCount.h"
#include "state/SettingsStore.h"

#include <QCoroTask>
#include <QString>
#include <functional>

namespace ostrelle {

/// Captions one image; if it is done, it is in the manifest afterwards. In the program, this is
/// Analyzer::captionWatched().
using Captioning = std::function<QCoro::Task<ImageOutcome>(ImageRequest request)>;

/// What the local scan works with. All of it must outlive the scan and its tasks.
struct LocalScanParts {
    const SettingsStore& settings;
    ProcessedFilesManifest& manifest;
    ProcessingTracker& tracker;
    FileAccess& access;
    CaptionTurns& turns;
    QueueCount& count;
    FolderThreads& threads;
    Clock& clock;
    PlainLog& log;
    Captioning captioning;
    /// Called once for each image, and reason, that fails before it can be captioned.
    OutcomeListener onFailure = [](const ImageOutcome&) {};
    /// Called after each look at the folder, with the reason if it failed, a sentence.
    std::function<void(const std::optional<QString>& trouble)> onLooked = [](const std::optional<QString>&) {
    };
};

} // namespace ostrelle
