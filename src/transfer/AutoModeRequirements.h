// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"
#include "state/SettingsStore.h"

#include <QString>
#include <optional>

namespace ostrelle {

/// Why auto mode cannot start.
struct MissingRequirement {
    QString message;                          ///< for the main panel
    std::optional<QString> logLine = {};      ///< for the log, without its component
    std::optional<QString> notification = {}; ///< what a user notification calls missing
};

/// The model service's key, which both sources require first.
std::optional<MissingRequirement> missingApiKey(const DefaultsStore& defaults);

/// What the local source says when there is no roster, neither selected nor in the folder.
MissingRequirement missingLocalRoster();

/// The first that is missing for the remote source. No folder is searched for a roster: there is none yet.
std::optional<MissingRequirement> missingForRemote(const DefaultsStore& defaults,
                                                   const SettingsStore& settings);

/// Whether it cannot be told yet what is missing: the password may still come.
bool isPasswordAwaited(const DefaultsStore& defaults, const SettingsStore& settings);

} // namespace ostrelle
