// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/FileAccess.h"
#include "platform/FolderThreads.h"
#include "platform/PlainLog.h"

#include <QCoroTask>
#include <QString>

namespace ostrelle {

/// Makes the sidecar of an image that needs one and has none by then, and says so on the console. Resumes
/// with whether it is new. Throws FileError. All references have to outlive the task.
QCoro::Task<bool> createSidecar(FolderThreads& threads, FileAccess& access, PlainLog& console, QString file);

} // namespace ostrelle
