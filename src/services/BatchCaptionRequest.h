// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "services/BatchCaptions.h"
#include "services/ChatRequest.h"

#include <QList>
#include <QString>

namespace ostrelle {

/// What is said to the model about a batch, in its order: the prompt, each image behind its number, name and
/// context, and the form of the answer.
QList<ChatMessage> batchCaptionMessages(const QList<BatchImageItem>& images, const QString& prompt);

} // namespace ostrelle
