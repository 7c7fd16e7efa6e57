// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/OpenAIClient.h"

#include "platform/ApiKey.h"
#include "services/OpenAIError.h"

#include <QUtf8StringView>
#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

std::optional<QString> strictUtf8(const QByteArray& bytes) {
    return QUtf8StringView(bytes).isValidUtf8() ? std::optional(QString::fromUtf8(bytes)) : std::nullopt;
}

/// Some servers repeat the key that they refuse, and what they say ends up in logs. Anything as short as
/// this is no key, and striking it out would only garble the text.
QString withoutKey(QString text, const QString& key) {
    constexpr qsizetype shortestKey = 8;
    const QString secret = key.trimmed();
    return secret.size() < shortestKey ? text : text.replace(secret, u"[API key]"_s);
}

/// A line break in a header's value would begin another header.
bool isHeaderValue(const QString& text) {
    return std::none_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x20 && c != u'\t'; });
}

} // namespace

OpenAIClient::OpenAIClient(QUrl modelUrl, const DefaultsStore& defaults, PlainLog& log, Clock& clock)
    : m_modelUrl(std::move(modelUrl)), m_defaults(defaults), m_log(log), m_channel(clock) {}

QCoro::Task<CaptionReply> OpenAIClient::generateCaption(QByteArray jpeg, QString prompt, QString model,
                                                        int maximumTokens, double temperature) {
    const QString key = apiKey(m_defaults);
    if (key.isEmpty()) {
        throw OpenAIError::missingAPIKey();
    }
    const ChatRequest request{
        .model = model,
        .messages = {{.role = u"system"_s, .content = {TextBlock{u"Return one factual sports caption."_s}}},
                     {.role = u"user"_s, .content = {TextBlock{prompt}, imageBlock(jpeg)}}},
        .temperature = temperature,
        .maximumTokens = maximumTokens};
    const QNetworkRequest http = jsonRequest(u"/v1/chat/completions"_s, key);
    const QByteArray body = encode(request);
    m_log.print(u"[OpenAIClient] JSON body size: "_s + QString::number(body.size()) + u" bytes"_s);
    const HttpReply reply = co_await m_channel.post(http, body);
    co_return captionReply(chatResponse(reply, key));
}

ImageBlock OpenAIClient::imageBlock(const QByteArray& jpeg) {
    constexpr double megabyte = 1048576;
    const QString megabytes = QString::number(static_cast<double>(jpeg.size()) / megabyte, 'f', 2);
    const QString url = jpegDataUrl(jpeg);
    const qsizetype base64Length = url.size() - url.indexOf(u',') - 1;
    m_log.print(u"[OpenAIClient] JPEG bytes: "_s + QString::number(jpeg.size()) + u" ("_s + megabytes +
                u" MB)"_s);
    m_log.print(u"[OpenAIClient] base64 length: "_s + QString::number(base64Length) + u" characters"_s);
    return {.url = url, .detail = u"low"_s};
}

QNetworkRequest OpenAIClient::jsonRequest(const QString& path, const QString& key) const {
    if (!isHeaderValue(key)) {
        throw OpenAIError::encoding();
    }
    QUrl url = m_modelUrl;
    url.setPath(path);
    QNetworkRequest request(url);
    request.setRawHeader("Authorization", "Bearer " + key.toUtf8());
    request.setRawHeader("Content-Type", "application/json");
    return request;
}

ChatResponse OpenAIClient::chatResponse(const HttpReply& reply, const QString& key) {
    if (!reply.status) {
        throw OpenAIError::invalidResponse();
    }
    const std::optional<QString> text = strictUtf8(reply.body);
    if (*reply.status < 200 || *reply.status > 299) {
        const QString body = withoutKey(text.value_or(QString()), key);
        m_log.print(u"[OpenAIClient] HTTP "_s + QString::number(*reply.status) + u" body:\n"_s + body);
        throw OpenAIError::http(*reply.status, body);
    }
    try {
        return decodeChatResponse(reply.body);
    } catch (const OpenAIError&) {
        m_log.print(u"[OpenAIClient] Decode failed. Body follows:\n"_s +
                    withoutKey(text.value_or(u"<non-utf8 body>"_s), key));
        throw;
    }
}

CaptionReply OpenAIClient::captionReply(const ChatResponse& response) {
    if (response.choices.isEmpty()) {
        throw OpenAIError::noChoices();
    }
    const QString text = response.choices.first().message.text().trimmed();
    if (text.isEmpty()) {
        throw OpenAIError::noChoices();
    }
    if (const std::optional<Usage>& usage = response.usage) {
        m_log.print(u"[OpenAIClient] Usage: "_s + QString::number(usage->promptTokens) + u" prompt + "_s +
                    QString::number(usage->completionTokens) + u" completion = "_s +
                    QString::number(usage->totalTokens) + u" total tokens"_s);
    }
    return {.text = text, .usage = response.usage};
}

} // namespace ostrelle
