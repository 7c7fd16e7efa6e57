// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/CaptionProgress.h"
#include "platform/Alerts.h"
#include "product/AppEvents.h"

#include <QCoroTask>
#include <QString>

namespace ostrelle {

/// The alert when captioning ends because no API key is stored.
Alert missingKeyAlert();
/// The alert when a run over a folder cannot begin for that reason.
Alert keyForFolderAlert();

/// The status line for it.
QString missingKeyMessage();

/// Shows one of these, opens the settings if the user chooses to, and leaves a message in the status. All
/// references must outlive the task.
QCoro::Task<> askForKey(Alert alert, Alerts& alerts, AppEvents& events, CaptionProgress& progress);

} // namespace ostrelle
