// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <optional>
#include <variant>

namespace ostrelle {

/// A text for the model.
struct TextBlock {
    QString text;
};

/// A picture for the model, which goes to it as a data URL.
struct ImageBlock {
    QByteArray jpeg;
    std::optional<QString> detail; ///< "low", "high" or "auto"
};

using ContentBlock = std::variant<TextBlock, ImageBlock>;

/// What one side says in a chat.
struct ChatMessage {
    QString role; ///< "system" or "user"
    QList<ContentBlock> content;
};

/// A request to the chat completions endpoint.
struct ChatRequest {
    QString model;
    QList<ChatMessage> messages;
    std::optional<double> temperature;
    std::optional<int> maximumTokens;
};

/// The request as compact JSON in UTF-8; what is absent is left out. Throws OpenAIError::encoding when a
/// text is not valid UTF-16 or the temperature not a finite number.
QByteArray encode(const ChatRequest& request);

/// How many characters so many bytes are in base64.
qsizetype base64Length(qsizetype bytes);

} // namespace ostrelle
