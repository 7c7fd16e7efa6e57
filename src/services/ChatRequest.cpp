// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/ChatRequest.h"

#include "services/OpenAIError.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <cmath>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Qt would write a lone surrogate as an escape that strict readers reject.
QJsonValue encoded(const QString& text) {
    if (!text.isValidUtf16()) {
        throw OpenAIError::encoding();
    }
    return text;
}

QString jpegDataUrl(const QByteArray& jpeg) {
    return u"data:image/jpeg;base64,"_s + QLatin1StringView(jpeg.toBase64());
}

struct BlockEncoder {
    QJsonObject operator()(const TextBlock& block) const {
        return {{u"type"_s, u"text"_s}, {u"text"_s, encoded(block.text)}};
    }
    QJsonObject operator()(const ImageBlock& block) const {
        QJsonObject payload{{u"url"_s, jpegDataUrl(block.jpeg)}};
        if (block.detail) {
            payload.insert(u"detail"_s, encoded(*block.detail));
        }
        return {{u"type"_s, u"image_url"_s}, {u"image_url"_s, payload}};
    }
};

QJsonObject encoded(const ChatMessage& message) {
    QJsonArray content;
    for (const ContentBlock& block : message.content) {
        content.append(std::visit(BlockEncoder{}, block));
    }
    return {{u"role"_s, encoded(message.role)}, {u"content"_s, content}};
}

} // namespace

QByteArray encode(const ChatRequest& request) {
    QJsonArray messages;
    for (const ChatMessage& message : request.messages) {
        messages.append(encoded(message));
    }
    QJsonObject object{{u"model"_s, encoded(request.model)}, {u"messages"_s, messages}};
    if (request.temperature) {
        if (!std::isfinite(*request.temperature)) {
            throw OpenAIError::encoding(); // JSON has no such number
        }
        object.insert(u"temperature"_s, *request.temperature);
    }
    if (request.maximumTokens) {
        object.insert(u"max_tokens"_s, *request.maximumTokens);
    }
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

qsizetype base64Length(qsizetype bytes) {
    return (bytes + 2) / 3 * 4;
}

} // namespace ostrelle
