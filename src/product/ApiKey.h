// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"

namespace ostrelle {

/// The defaults key of the model service's API key, as the user entered it.
extern const QString apiKeyName;

/// The current API key, read afresh at each call; empty when none is stored.
QString apiKey(const DefaultsStore& defaults);

} // namespace ostrelle
