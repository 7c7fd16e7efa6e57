// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "state/SettingsStore.h"

#include <QString>
#include <optional>

namespace ostrelle {

/// The first line that is not blank, trimmed; of a text without one, the text trimmed.
QString firstNonEmptyLine(const QString& text);

/// True when the caption still holds "City, State" or "City,State", in any case.
bool hasPlaceholder(const QString& caption);

/// True when the caption is long enough to be a person's and not a preset's stub: 51 user-perceived
/// characters without the blanks around them.
bool isRealCaption(const QString& caption);

/// The caption with a credit line at its end, where the user wants one: the image's rights, or else the
/// fallback. A caption that the model has already ended with the rights has them twice then.
QString finalizeCaption(const QString& caption, const std::optional<QString>& rights,
                        const SettingsStore& settings);

/// True when the texts are the same characters, however these are composed (Unicode canonical equivalence).
bool isSameText(const QString& left, const QString& right);

} // namespace ostrelle
