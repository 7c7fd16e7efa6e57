// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/SourceType.h"
#include "pipeline/CaptionCount.h"
#include "platform/Alerts.h"
#include "platform/DefaultsStore.h"
#include "state/SettingsStore.h"

#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// What captioning needs, and whether it is set up.
struct Readiness {
    SourceType source = SourceType::local;
    bool hasKey = false;
    bool hasFolder = false;           ///< the working folder of the source
    bool hasCodeReplacements = false; ///< a selected file, or one in the local source's folder

    /// `folderHasRoster`: whether there is a roster in the watch folder, see RosterWatch.
    static Readiness of(const DefaultsStore& defaults, const SettingsStore& settings, bool folderHasRoster);
};

/// What is missing, by the names that the user sees.
QStringList missingConfiguration(const Readiness& readiness);

/// Whether the user can start captioning.
bool canProcess(const Readiness& readiness);

/// The alert about what is missing when the user starts captioning. The list must not be empty.
Alert configurationAlert(const QStringList& missing);

/// Why auto mode cannot be turned on; nothing when it can.
std::optional<Alert> autoModeRefusal(const Readiness& readiness);

/// Turns auto mode on or off. If it cannot be turned on, it is off and the alert says why.
std::optional<Alert> switchAutoMode(SettingsStore& settings, const Readiness& readiness, bool on);

/// The question before all images of the watch folder are captioned; the second button means yes, the third,
/// if any, only those without a caption. Without a count, it does not tell how many there are.
Alert captionAllQuestion(const std::optional<CaptionCount>& count = {}, bool isOverwriting = true);
/// The same for images that the user has dropped; nothing if none of their captions would be replaced.
std::optional<Alert> captionDroppedQuestion(const CaptionCount& count, bool isOverwriting);
/// The question before all is fetched from the server; the second button means yes.
Alert downloadAllQuestion();

} // namespace ostrelle
