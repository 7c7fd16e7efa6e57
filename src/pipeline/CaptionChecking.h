// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/CaptionStyle.h"
#include "metadata/facts/ImageFacts.h"
#include "pipeline/CodeReplacements.h"

#include <QString>
#include <QTimeZone>

#include "checks/CheckedCaption.h"
#include "checks/RosterNames.h"

namespace ostrelle {

/// A caption beside what its image's metadata say, ready to be checked. `zone` is the user's.
CheckedCaption checkedCaption(const QString& caption, const ImageFacts& facts, CaptionStyle style,
                              const QTimeZone& zone);

/// The persons of the roster as it goes to the model.
RosterNames rosterNames(const CodeReplacements& replacements);

} // namespace ostrelle
