// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/FolderThreads.h"

#include <QCoroTask>
#include <QString>
#include <QStringList>

namespace ostrelle {

/// Removes the temporary files that a killed run has left in the folder. The threads must outlive the task.
QCoro::Task<> tidyFolder(FolderThreads& threads, QString folder);
/// Tidies each folder that holds any of the files.
QCoro::Task<> tidyFoldersOf(FolderThreads& threads, QStringList files);

} // namespace ostrelle
