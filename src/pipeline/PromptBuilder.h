// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/ContextBlock.h"

#include <QString>
#include <QTimeZone>

namespace ostrelle {

/// The text that goes to the model with one image: the facts, then the caption that the image has now.
QString buildPrompt(const CaptionFacts& facts, const QTimeZone& zone);

} // namespace ostrelle
