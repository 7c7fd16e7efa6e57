// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/CheckedFiles.h"

#include <QString>

namespace ostrelle {

/// The file's name and a line for each finding.
QString checkText(const CheckedFile& file);

/// The same as one line of JSON. `from` and `to` count Unicode code points of the caption.
QString checkJson(const CheckedFile& file);

/// Warns that names and numbers could not be checked.
QString withoutRosterWords();

} // namespace ostrelle
