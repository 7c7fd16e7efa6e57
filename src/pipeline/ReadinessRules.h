// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/SourceType.h"
#include "platform/Alerts.h"
#include "platform/DefaultsStore.h"
#include "state/SettingsStore.h"

#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// How much of what captioning needs has been set up.
struct Readiness {
    SourceType source = SourceType::local;
    bool hasKey = false;
    bool hasFolder = false;           ///< the one that the source works in
    bool hasCodeReplacements = false; ///< a selected file, or one in the local source's folder

    /// `folderHasRoster` says whether a roster lies in the watch folder, see RosterWatch.
    static Readiness of(const DefaultsStore& defaults, const SettingsStore& settings, bool folderHasRoster);
};

/// What is missing, by the names that the user knows.
QStringList missingConfiguration(const Readiness& readiness);

/// Whether images can be captioned at the user's command.
bool canProcess(const Readiness& readiness);

/// What the user is told who wants to caption without it. The list is not empty.
Alert configurationAlert(const QStringList& missing);

/// Why auto mode cannot be turned on; nothing when it can.
std::optional<Alert> autoModeRefusal(const Readiness& readiness);

/// Turns auto mode on or off. What comes back is why it was not turned on: it is off then.
std::optional<Alert> switchAutoMode(SettingsStore& settings, const Readiness& readiness, bool on);

/// The questions before all images of the source are captioned; the second button means yes.
Alert captionAllQuestion();
Alert downloadAllQuestion();

} // namespace ostrelle
