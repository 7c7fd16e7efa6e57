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

/// A picture for the model, sent as a data URL.
struct ImageBlock {
    QByteArray jpeg;
    std::optional<QString> detail; ///< "low", "high" or "auto"
};

using ContentBlock = std::variant<TextBlock, ImageBlock>;

/// One message of a chat.
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

/// The request as compact JSON in UTF-8, without absent fields. Throws OpenAIError::encoding when a text is
/// not valid UTF-16 or the temperature is not finite.
QByteArray encode(const ChatRequest& request);

/// The base64 length, in characters, of that many bytes.
qsizetype base64Length(qsizetype bytes);

} // namespace ostrelle
