// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>

#include "checks/CheckedCaption.h"
#include "checks/Finding.h"
#include "checks/RosterNames.h"

namespace ostrelle {

/// Dates, places, venues and opponents that contradict the facts, and a date or place that is missing.
QList<Finding> factFindings(const CheckedCaption& checked, const RosterNames& roster);

} // namespace ostrelle
