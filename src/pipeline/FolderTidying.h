// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/FolderThreads.h"

#include <QCoroTask>
#include <QString>

namespace ostrelle {

/// Removes from the folder what a run that was killed has left there. The threads have to outlive the task.
QCoro::Task<> tidyFolder(FolderThreads& threads, QString folder);

} // namespace ostrelle
