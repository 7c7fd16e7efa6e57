// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace ostrelle {

/// One line of a roster.
struct RosterEntry {
    QString code; ///< before the first tab
    QString name; ///< the rest of the line
};

} // namespace ostrelle
