// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "services/BatchCaptions.h"
#include "services/ChatRequest.h"

#include <QList>
#include <QString>

namespace ostrelle {

/// The messages of a batch request, in order: the prompt, each image after its number, name and context, and
/// the form of the answer.
QList<ChatMessage> batchCaptionMessages(const QList<BatchImageItem>& images, const QString& prompt);

} // namespace ostrelle
