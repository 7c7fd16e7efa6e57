// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/PromptQuery.h"
#include "pipeline/AnalyzerLog.h"
#include "pipeline/CodeReplacements.h"
#include "pipeline/ContextBlock.h"
#include "pipeline/PreparedImage.h"
#include "services/OpenAIClient.h"
#include "services/PromptService.h"
#include "state/SettingsStore.h"
#include "state/UsageTracker.h"

#include <QByteArray>
#include <QCoroTask>
#include <QString>
#include <QTimeZone>

namespace ostrelle {

/// The model that writes captions, and how freely it writes.
inline const QString captionModel = QStringLiteral("gpt-4o-mini");
inline constexpr double captionTemperature = 0.2;

/// What the settings say of the rules.
PromptQuery promptQuery(const SettingsStore& settings);

/// The image's facts, with what the settings say of the game.
CaptionFacts captionFacts(const PreparedImage& image, const SettingsStore& settings);

/// The text that goes to the model with a single image. Throws PromptError. All references have to outlive
/// the task.
QCoro::Task<QString> composeImagePrompt(const SettingsStore& settings, PromptService& prompts,
                                        AnalyzerLog& log, QTimeZone zone, PreparedImage image,
                                        CodeReplacements roster);

/// Asks the model for the caption of a single image and books what it cost. Throws what went wrong. All
/// references have to outlive the task.
QCoro::Task<CaptionReply> askForCaption(OpenAIClient& openAI, UsageTracker& usage, QByteArray jpeg,
                                        QString prompt);

} // namespace ostrelle
