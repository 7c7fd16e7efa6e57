// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>

#include "checks/CheckedCaption.h"
#include "checks/Finding.h"

namespace ostrelle {

/// A part of a text, in UTF-16 code units.
struct TextSpan {
    qsizetype from = 0;
    qsizetype to = 0;
};

/// What the caption says of the picture: without the place and date that a style puts in front, and without
/// the credit.
TextSpan bodyOf(const CheckedCaption& checked);

/// A credit that stands twice, or not at all although the facts have one.
QList<Finding> creditFindings(const CheckedCaption& checked);

} // namespace ostrelle
