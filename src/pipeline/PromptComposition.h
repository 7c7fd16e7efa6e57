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

/// The model that writes captions, and its temperature.
inline const QString captionModel = QStringLiteral("gpt-4o-mini");
inline constexpr double captionTemperature = 0.2;

/// The settings that decide which rules apply.
PromptQuery promptQuery(const SettingsStore& settings);

/// The image's facts, with those of the game from the settings.
CaptionFacts captionFacts(const PreparedImage& image, const SettingsStore& settings);

/// The prompt for a single image. Throws PromptError. All references must outlive the task.
QCoro::Task<QString> composeImagePrompt(const SettingsStore& settings, PromptService& prompts,
                                        AnalyzerLog& log, QTimeZone zone, PreparedImage image,
                                        CodeReplacements roster);

/// Requests the caption of a single image and records its cost. Throws as OpenAIClient::generateCaption().
/// All references must outlive the task.
QCoro::Task<CaptionReply> askForCaption(OpenAIClient& openAI, UsageTracker& usage, QByteArray jpeg,
                                        QString prompt);

} // namespace ostrelle
