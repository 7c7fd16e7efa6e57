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
    std::optional<QString> logLine = {};      ///< without the component's name in brackets
    std::optional<QString> notification = {}; ///< the name of what is missing, for a notification
};

/// The model service's key, if missing; both sources require it first.
std::optional<MissingRequirement> missingApiKey(const DefaultsStore& defaults);

/// For the local source when there is no roster, neither selected nor in the folder.
MissingRequirement missingLocalRoster();

/// The first requirement that the remote source lacks. Searches no folder for a roster: there is none yet.
std::optional<MissingRequirement> missingForRemote(const DefaultsStore& defaults,
                                                   const SettingsStore& settings);

/// Whether it is too early to tell what is missing, as the password may still arrive.
bool isPasswordAwaited(const DefaultsStore& defaults, const SettingsStore& settings);

} // namespace ostrelle
