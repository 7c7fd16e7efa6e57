// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/CaptionProgress.h"
#include "platform/Alerts.h"
#include "product/AppEvents.h"

#include <QCoroTask>
#include <QString>

namespace ostrelle {

/// What is shown when captioning ends because no API key is stored.
Alert missingKeyAlert();
/// What is shown when a run over a folder cannot begin without one.
Alert keyForFolderAlert();

/// The status line for it.
QString missingKeyMessage();

/// Shows one of these, opens the settings if the user wants to go there, and leaves word in the status. All
/// references have to outlive the task.
QCoro::Task<> askForKey(Alert alert, Alerts& alerts, AppEvents& events, CaptionProgress& progress);

} // namespace ostrelle
