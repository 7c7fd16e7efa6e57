// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QStringList>

#include "checks/CheckedCaption.h"
#include "checks/Finding.h"
#include "checks/RosterNames.h"

namespace ostrelle {

/// What to look at in a caption before it goes out, in the order of the text. Without names in the roster, no
/// name or number is judged; of a text longer than 4,000 UTF-16 code units only its form. Changes nothing.
QList<Finding> checkCaption(const CheckedCaption& checked, const RosterNames& roster);

/// For each caption of a run, whether another picture has the same words, or all but one. An empty finding
/// where none has.
QList<std::optional<Finding>> repeatedCaptions(const QStringList& captions);

} // namespace ostrelle
