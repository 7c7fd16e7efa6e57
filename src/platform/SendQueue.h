// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

namespace ostrelle {

/// The number of bytes this process has sent over TCP to that port of any host that are not acknowledged yet.
/// The system buffers far more at once than a slow line carries in a minute; this shows when it really
/// leaves. Does not block.
qint64 unacknowledgedBytes(int peerPort);

} // namespace ostrelle
