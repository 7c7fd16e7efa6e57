// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "product/ApiKey.h"
#include "services/OpenAIClient.h"
#include "services/OpenAIError.h"
#include "standins/JpegBuilder.h"
#include "standins/MemoryDefaults.h"
#include "standins/ModelStandIn.h"
#include "standins/SportsScene.h"
#include "support/Failure.h"
#include "support/RecordingLog.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QJsonObject>

namespace ostrelle {

inline const QString captionPrompt =
    QStringLiteral("Context:\n- Event: Harbor Classic\n- Sport: Soccer\n\nUse “AP” style.");

/// The client over a stand-in for the model service.
class ModelServiceTest : public testing::Test {
protected:
    ModelServiceTest() { defaults.set(apiKeyName, key); }

    /// A different picture for each number.
    static QByteArray smallJpeg(quint32 number = 1) { return jpegFile(SportsScene(16, 12, number).image()); }

    /// A reply whose first choice has this JSON as its content.
    static QByteArray replyWithContent(const QByteArray& content) {
        return R"({"id":"c-1","choices":[{"index":0,"message":{"role":"assistant","content":)" + content +
               R"(},"finish_reason":"stop"}]})";
    }
    /// A reply whose first choice is this text.
    static QByteArray replyWithText(const QString& text) {
        const QJsonObject holder{{QStringLiteral("t"), text}};
        return replyWithContent(QJsonDocument(holder).toJson(QJsonDocument::Compact).sliced(5).chopped(1));
    }
    /// The reply with this JSON as its usage.
    static QByteArray withUsage(const QByteArray& reply, const QByteArray& usage) {
        return reply.chopped(1) + R"(,"usage":)" + usage + '}';
    }

    static QCoro::Task<CaptionReply> start(OpenAIClient& asked) {
        return asked.generateCaption(smallJpeg(), captionPrompt, QStringLiteral("gpt-4o-mini"), 180, 0.2);
    }
    CaptionReply ask() { return await(start(client)); }
    template <typename Function>
    OpenAIError refusal(StandInAnswer answer, const Function& call) {
        log.lines.clear();
        standIn.enqueue(std::move(answer));
        return failureIn<OpenAIError>(call);
    }
    CaptionReply askWith(StandInAnswer answer) {
        standIn.enqueue(std::move(answer));
        return ask();
    }

    const QString key = QStringLiteral("sk-test-0123456789abcdef");
    MemoryDefaults defaults;
    RecordingLog log;
    VirtualClock clock;
    ModelStandIn standIn{key.toUtf8()};
    OpenAIClient client{standIn.url(), defaults, log, clock};
};

} // namespace ostrelle
