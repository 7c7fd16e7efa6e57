// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

namespace ostrelle {

/// How many bytes this process has sent over TCP to that port of other hosts without their having
/// acknowledged them yet. The system takes in far more at once than a slow line carries in a minute; here one
/// sees it leave. Blocks nowhere.
qint64 unacknowledgedBytes(int peerPort);

} // namespace ostrelle
