// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/OpenAIClient.h"

#include "core/Attempt.h"
#include "core/OffMainThread.h"
#include "product/ApiKey.h"
#include "services/BatchCaptionParsing.h"
#include "services/BatchCaptionRequest.h"
#include "services/ChatRequest.h"
#include "services/JsonFields.h"
#include "services/OpenAIError.h"
#include "services/TranscriptionRequest.h"
#include "services/TransportError.h"
#include "services/WireText.h"

#include <QFileInfo>
#include <numeric>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString chatPath = u"/v1/chat/completions"_s;
const QByteArray jsonType = "application/json";

QList<ChatMessage> captionMessages(const QByteArray& jpeg, const QString& prompt) {
    return {
        {.role = u"system"_s, .content = {TextBlock{u"Return one factual sports caption."_s}}},
        {.role = u"user"_s, .content = {TextBlock{prompt}, ImageBlock{.jpeg = jpeg, .detail = u"low"_s}}}};
}

QStringList fileNamesOf(const QList<BatchImageItem>& images) {
    QStringList names;
    for (const BatchImageItem& image : images) {
        names.append(image.filename);
    }
    return names;
}

qsizetype totalSizeOf(const QList<BatchImageItem>& images) {
    return std::accumulate(
        images.begin(), images.end(), qsizetype{0},
        [](qsizetype sum, const BatchImageItem& image) { return sum + image.imageJPEGData.size(); });
}

/// On a worker thread: encoding a body of pictures takes a while.
QCoro::Task<QByteArray> encodeOffMainThread(ChatRequest request) {
    return offMainThread([request = std::move(request)] { return encode(request); });
}

void throwIfGone(const std::weak_ptr<const bool>& client) {
    if (client.expired()) {
        throw TransportError::closing();
    }
}

} // namespace

OpenAIClient::OpenAIClient(QUrl modelUrl, const DefaultsStore& defaults, PlainLog& log, Clock& clock)
    : m_modelUrl(std::move(modelUrl)), m_defaults(defaults), m_log(log), m_channel(clock) {}

QCoro::Task<CaptionReply> OpenAIClient::generateCaption(QByteArray jpeg, QString prompt, QString model,
                                                        int maximumTokens, double temperature) {
    const std::weak_ptr<const bool> life = m_life;
    const QString key = requiredKey();
    printPicture(jpeg);
    const QNetworkRequest toSend = request(chatPath, key, jsonType);
    ChatRequest chat{.model = model,
                     .messages = captionMessages(jpeg, prompt),
                     .temperature = temperature,
                     .maximumTokens = maximumTokens};
    const QByteArray body = co_await encodeOffMainThread(std::move(chat));
    throwIfGone(life);
    m_log.print(u"[OpenAIClient] JSON body size: "_s + QString::number(body.size()) + u" bytes"_s);
    const HttpReply reply = co_await m_channel.post(toSend, body);
    co_return captionReply(decoded(reply, key,
                                   {.status = u"[OpenAIClient] HTTP "_s,
                                    .undecodable = u"[OpenAIClient] Decode failed. Body follows:\n"_s},
                                   decodeChatResponse));
}

QCoro::Task<BatchCaptionReply> OpenAIClient::generateBatchCaptions(QList<BatchImageItem> images,
                                                                   QString prompt, QString model,
                                                                   int maximumTokens, double temperature) {
    const std::weak_ptr<const bool> life = m_life;
    const QString key = requiredKey();
    const QStringList fileNames = fileNamesOf(images);
    if (images.isEmpty()) {
        throw OpenAIError::noChoices();
    }
    if (images.size() == 1) {
        const BatchImageItem image = images.first();
        const CaptionReply reply = co_await generateCaption(
            image.imageJPEGData, prompt + u"\n\n"_s + image.context, model, maximumTokens, temperature);
        co_return {.results = {{.position = 0, .filename = image.filename, .caption = reply.text}},
                   .usage = reply.usage};
    }
    const QNetworkRequest toSend = request(chatPath, key, jsonType);
    const qsizetype pictureBytes = totalSizeOf(images);
    ChatRequest chat{.model = model,
                     .messages = batchCaptionMessages(images, prompt),
                     .temperature = temperature,
                     .maximumTokens = maximumTokens};
    images.clear(); // not needed while waiting for the answer: the body holds them
    const QByteArray body = co_await encodeOffMainThread(std::move(chat));
    throwIfGone(life);
    m_log.print(
        u"[OpenAIClient] Batch captioning %1 images: JSON body size: %2 bytes, total image size: %3 bytes"_s
            .arg(fileNames.size())
            .arg(body.size())
            .arg(pictureBytes));
    const HttpReply reply = co_await m_channel.post(toSend, body);
    const ChatResponse response =
        decoded(reply, key,
                {.status = u"[OpenAIClient] Batch HTTP "_s,
                 .undecodable = u"[OpenAIClient] Batch decode failed. Body follows:\n"_s},
                decodeChatResponse);
    co_return batchReply(response, key, fileNames);
}

QCoro::Task<QString> OpenAIClient::transcribeAudio(QString file, QThreadPool* reader) {
    const std::weak_ptr<const bool> life = m_life;
    const QString key = requiredKey();
    const QByteArray boundary = newBoundary();
    auto read = [file, boundary] { return readTranscriptionBody(file, boundary); };
    const TranscriptionBody body = co_await onThreadPool(reader, read);
    throwIfGone(life);
    m_log.print(u"[OpenAIClient] Audio file: "_s + QFileInfo(file).fileName() + u", size: "_s +
                QString::number(body.audioSize) + u" bytes"_s);
    const QNetworkRequest toSend =
        request(u"/v1/audio/transcriptions"_s, key, "multipart/form-data; boundary=" + boundary);
    const HttpReply reply = co_await m_channel.post(toSend, body.bytes);
    const QString text =
        decoded(reply, key,
                {.status = u"[OpenAIClient] Transcription HTTP "_s,
                 .undecodable = u"[OpenAIClient] Transcription decode failed. Body follows:\n"_s},
                decodeTranscription);
    m_log.print(u"[OpenAIClient] Transcription: "_s + text);
    co_return text;
}

QCoro::Task<KeyVerdict> OpenAIClient::judgeKey() {
    using Kind = KeyVerdict::Kind;
    const auto reply = co_await attempt(askForModels());
    if (!reply) {
        co_return {.kind = Kind::unknown, .reason = reply.words()};
    }
    const int status = reply->status.value_or(0);
    if (status >= 200 && status <= 299) {
        co_return {.kind = Kind::accepted};
    }
    if (status == 401 || status == 403) {
        co_return {.kind = Kind::refused};
    }
    co_return {.kind = Kind::unknown, .reason = u"The service answered with HTTP %1."_s.arg(status)};
}

/// The list of models: it costs nothing, and the service shows it only to whom it knows.
QCoro::Task<HttpReply> OpenAIClient::askForModels() {
    constexpr std::chrono::seconds idle{10};
    const QNetworkRequest toSend = request(u"/v1/models"_s, requiredKey(), jsonType);
    co_return co_await m_channel.get(toSend, idle);
}

QString OpenAIClient::requiredKey() const {
    const QString key = apiKey(m_defaults);
    if (key.isEmpty()) {
        throw OpenAIError::missingAPIKey();
    }
    return key;
}

QNetworkRequest OpenAIClient::request(const QString& path, const QString& key,
                                      const QByteArray& contentType) const {
    if (!isHeaderValue(key)) {
        throw OpenAIError::encoding();
    }
    QUrl url = m_modelUrl;
    url.setPath(path);
    QNetworkRequest request(url);
    request.setRawHeader("Authorization", "Bearer " + key.toUtf8());
    request.setRawHeader("Content-Type", contentType);
    return request;
}

template <typename Answer>
Answer OpenAIClient::decoded(const HttpReply& reply, const QString& key, const ReplyLines& lines,
                             Answer (*decode)(const QByteArray&)) {
    throwUnlessSuccess(reply, key, lines.status);
    try {
        return decode(reply.body);
    } catch (const JsonError& error) {
        const QString text = strictUtf8(reply.body).value_or(u"<non-utf8 body>"_s);
        m_log.print(lines.undecodable + withoutKey(text, key));
        throw OpenAIError::decoding(error.localizedDescription());
    }
}

void OpenAIClient::throwUnlessSuccess(const HttpReply& reply, const QString& key, const QString& line) {
    if (!reply.status) {
        throw OpenAIError::invalidResponse();
    }
    if (*reply.status < 200 || *reply.status > 299) {
        const QString body = withoutKey(strictUtf8(reply.body).value_or(QString()), key);
        m_log.print(line + QString::number(*reply.status) + u" body:\n"_s + body);
        throw OpenAIError::http(*reply.status, body);
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
    if (text.size() > longestCaption) {
        throw OpenAIError::decoding(u"The caption is longer than %1 characters."_s.arg(longestCaption));
    }
    if (response.usage) {
        printUsage(u"[OpenAIClient] Usage: "_s, *response.usage);
    }
    return {.text = text, .usage = response.usage};
}

BatchCaptionReply OpenAIClient::batchReply(const ChatResponse& response, const QString& key,
                                           const QStringList& fileNames) {
    if (response.choices.isEmpty()) {
        throw OpenAIError::noChoices();
    }
    const QString text = response.choices.first().message.text().trimmed();
    if (const std::optional<Usage>& usage = response.usage) {
        printUsage(u"[OpenAIClient] Batch usage: "_s, *usage);
        m_log.print(
            u"[OpenAIClient] Average tokens per image: %1 (vs ~%2 prompt tokens per image if sent individually)"_s
                .arg(usage->totalTokens / fileNames.size())
                .arg(usage->promptTokens / fileNames.size()));
    }
    return {.results = captionsIn(text, fileNames, key), .usage = response.usage};
}

QList<BatchCaptionResult> OpenAIClient::captionsIn(const QString& text, const QStringList& fileNames,
                                                   const QString& key) {
    const QString list = jsonListIn(text);
    if (!list.isValidUtf16()) {
        m_log.print(u"[OpenAIClient] Failed to convert response to data. Response text: "_s +
                    withoutKey(text, key));
        throw OpenAIError::decoding(u"Failed to convert response text to data"_s);
    }
    try {
        return captionsOfImages(decodeBatchItems(list.toUtf8()), fileNames);
    } catch (const JsonError& error) {
        m_log.print(u"[OpenAIClient] Failed to parse JSON. Response text: "_s + withoutKey(text, key));
        throw OpenAIError::decoding(u"Failed to parse batch response as JSON: "_s +
                                    error.localizedDescription());
    }
}

void OpenAIClient::printPicture(const QByteArray& jpeg) {
    constexpr double megabyte = 1048576;
    const QString megabytes = QString::number(static_cast<double>(jpeg.size()) / megabyte, 'f', 2);
    m_log.print(u"[OpenAIClient] JPEG bytes: "_s + QString::number(jpeg.size()) + u" ("_s + megabytes +
                u" MB)"_s);
    m_log.print(u"[OpenAIClient] base64 length: "_s + QString::number(base64Length(jpeg.size())) +
                u" characters"_s);
}

void OpenAIClient::printUsage(const QString& line, const Usage& usage) {
    m_log.print(line + QString::number(usage.promptTokens) + u" prompt + "_s +
                QString::number(usage.completionTokens) + u" completion = "_s +
                QString::number(usage.totalTokens) + u" total tokens"_s);
}

} // namespace ostrelle
