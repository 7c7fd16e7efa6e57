// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/PromptQuery.h"
#include "pipeline/AnalyzerParts.h"
#include "pipeline/CodeReplacements.h"
#include "pipeline/ContextBlock.h"
#include "pipeline/PreparedImage.h"

#include <QCoroTask>
#include <QString>

namespace ostrelle {

/// The model that writes captions, and how freely it writes.
inline const QString captionModel = QStringLiteral("gpt-4o-mini");
inline constexpr double captionTemperature = 0.2;

/// What the settings say of the rules.
PromptQuery promptQuery(const SettingsStore& settings);

/// The image's facts, with what the settings say of the game.
CaptionFacts captionFacts(const PreparedImage& image, const SettingsStore& settings);

/// The text that goes to the model with a single image. Throws PromptError.
QCoro::Task<QString> composeImagePrompt(AnalyzerParts parts, PreparedImage image, CodeReplacements roster);

/// Asks the model for the caption of a single image and books what it cost. Throws what went wrong.
QCoro::Task<CaptionReply> askForCaption(AnalyzerParts parts, QByteArray jpeg, QString prompt);

} // namespace ostrelle
