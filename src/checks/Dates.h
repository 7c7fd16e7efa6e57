// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>

#include "checks/CheckedCaption.h"
#include "checks/Finding.h"

namespace ostrelle {

/// A date that is not the picture's, a weekday that is not the date's, or no date where the style wants one.
QList<Finding> dateFindings(const CheckedCaption& checked);

} // namespace ostrelle
