// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Alerts.h"

#include <QString>

namespace ostrelle {

/// What the user is told when a run ends because no API key is stored: its first button leads to the
/// settings.
Alert missingKeyAlert();

/// The status line after it.
QString missingKeyMessage();

} // namespace ostrelle
