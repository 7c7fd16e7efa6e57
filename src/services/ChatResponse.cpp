// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/ChatResponse.h"

#include "services/JsonFields.h"

#include <QStringList>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

ResponseBlock decodeBlock(const QJsonValue& value) {
    const JsonFields fields(value, u"content"_s);
    return {.type = fields.optionalText(u"type"_s), .text = fields.optionalText(u"text"_s)};
}

/// Nothing when the value is not a list or one of its elements is not a block.
std::optional<QList<ResponseBlock>> decodeBlocks(const QJsonValue& value) {
    if (!value.isArray()) {
        return std::nullopt;
    }
    QList<ResponseBlock> blocks;
    try {
        const QJsonArray elements = value.toArray();
        for (const QJsonValue element : elements) {
            blocks.append(decodeBlock(element));
        }
    } catch (const JsonError&) {
        return std::nullopt;
    }
    return blocks;
}

/// Content in neither form is not an error: the message is then empty.
ResponseMessage decodeMessage(const JsonFields& fields) {
    const QJsonValue content = fields.value(u"content"_s);
    return {.role = fields.text(u"role"_s),
            .contentArray = decodeBlocks(content),
            .contentString = content.isString() ? std::optional(content.toString()) : std::nullopt};
}

Choice decodeChoice(const JsonFields& fields) {
    return {.index = fields.integer(u"index"_s),
            .message = decodeMessage(fields.object(u"message"_s)),
            .finishReason = fields.optionalText(u"finish_reason"_s)};
}

/// A count plausible for text and a picture; any other would distort the user's recorded costs permanently.
qint64 tokenCount(const JsonFields& fields, const QString& name) {
    constexpr qint64 mostTokens = 1'000'000'000;
    const qint64 count = fields.integer(name);
    if (count < 0 || count > mostTokens) {
        throw JsonError(u"%1 is no number of tokens: %2"_s.arg(name, QString::number(count)));
    }
    return count;
}

Usage decodeUsage(const JsonFields& fields) {
    return {.promptTokens = tokenCount(fields, u"prompt_tokens"_s),
            .completionTokens = tokenCount(fields, u"completion_tokens"_s),
            .totalTokens = tokenCount(fields, u"total_tokens"_s)};
}

} // namespace

QString ResponseMessage::text() const {
    if (!contentArray) {
        return contentString.value_or(QString());
    }
    QStringList texts;
    for (const ResponseBlock& block : *contentArray) {
        if (block.text) {
            texts.append(*block.text);
        }
    }
    return texts.join(u' ');
}

ChatResponse decodeChatResponse(const QByteArray& json) {
    const JsonFields fields = JsonFields::parse(json);
    ChatResponse response{.id = fields.text(u"id"_s), .choices = {}, .usage = {}};
    const QJsonArray choices = fields.list(u"choices"_s);
    for (qsizetype index = 0; index < choices.size(); ++index) {
        const QString path = u"choices["_s + QString::number(index) + u']';
        response.choices.append(decodeChoice(JsonFields(choices.at(index), path)));
    }
    if (const auto usage = fields.optionalObject(u"usage"_s)) {
        response.usage = decodeUsage(*usage);
    }
    return response;
}

} // namespace ostrelle
