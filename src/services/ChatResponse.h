// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <optional>

namespace ostrelle {

/// In characters. No requested caption comes near it, and a longer one fits in no file.
constexpr qsizetype longestCaption = qsizetype{32} * 1024;

/// The tokens charged for one request.
struct Usage {
    qint64 promptTokens = 0;
    qint64 completionTokens = 0;
    qint64 totalTokens = 0;

    bool operator==(const Usage&) const = default;
};

/// A piece of the model's answer; only text pieces have a text.
struct ResponseBlock {
    std::optional<QString> type;
    std::optional<QString> text;
};

/// The model's answer, as a list of blocks or as one string.
struct ResponseMessage {
    QString role;
    std::optional<QList<ResponseBlock>> contentArray;
    std::optional<QString> contentString;

    /// The texts of the blocks, joined with blanks, or the string, or nothing.
    QString text() const;
};

struct Choice {
    qint64 index = 0;
    ResponseMessage message;
    std::optional<QString> finishReason;
};

/// A reply from the chat completions endpoint.
struct ChatResponse {
    QString id;
    QList<Choice> choices;
    std::optional<Usage> usage;
};

/// Decodes a reply; ignores unknown fields. Throws JsonError.
ChatResponse decodeChatResponse(const QByteArray& json);

} // namespace ostrelle
