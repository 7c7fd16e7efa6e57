// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>

#include "checks/CheckedCaption.h"
#include "checks/Finding.h"

namespace ostrelle {

/// What is wrong with a caption whatever the picture: empty, cut off, placeholders, several lines, characters
/// that a wire does not take.
QList<Finding> formFindings(const CheckedCaption& checked);

} // namespace ostrelle
