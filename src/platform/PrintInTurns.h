// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/PlainLog.h"

#include <QCoroTask>
#include <QStringList>

namespace ostrelle {

/// Prints any number of lines without holding up the event loop. The log must outlive the task.
QCoro::Task<> printInTurns(PlainLog& log, QStringList lines);

} // namespace ostrelle
