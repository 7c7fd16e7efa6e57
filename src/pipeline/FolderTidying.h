// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/FolderThreads.h"

#include <QCoroTask>
#include <QString>
#include <QStringList>

namespace ostrelle {

/// Removes from the folder what a run that was killed has left there. The threads have to outlive the task.
QCoro::Task<> tidyFolder(FolderThreads& threads, QString folder);
/// The same for each folder of the files.
QCoro::Task<> tidyFoldersOf(FolderThreads& threads, QStringList files);

} // namespace ostrelle
