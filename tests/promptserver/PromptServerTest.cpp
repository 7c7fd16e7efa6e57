// SPDX-License-Identifier: GPL-3.0-or-later
#include "promptserver/PromptServer.h"

#include "core/Error.h"
#include "core/Iso8601.h"
#include "promptserver/Asking.h"
#include "promptserver/TemplateMaker.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <atomic>
#include <optional>
#include <thread>
#include <vector>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QByteArray key = "pk-0123456789";

/// Every possible query.
QList<PromptQuery> allQueries() {
    QList<PromptQuery> queries;
    for (const auto& style : rawValueRows<CaptionStyle>()) {
        for (const auto& sport : rawValueRows<Sport>()) {
            for (const auto& fallback : rawValueRows<FallbackBehavior>()) {
                for (const int switches : {0, 1, 2, 3}) {
                    queries.append({.style = style.value,
                                    .sport = sport.value,
                                    .fallback = fallback.value,
                                    .includeOffenseDefense = (switches & 1) != 0,
                                    .prioritizeAudioFiles = (switches & 2) != 0});
                }
            }
        }
    }
    return queries;
}

/// The rules in the prompt of a batch, in order.
QStringList batchRules(const PromptQuery& query) {
    const PromptLibrary library;
    return {library.commonHead(), library.commonData(), library.sportRules(query.sport),
            library.fallbackRules(query.fallback),
            library.styleRules(query.style, query.sport, query.includeOffenseDefense)};
}

/// The rules in the prompt of a single image.
QString singleRules(const QJsonObject& templates, const PromptQuery& query) {
    QStringList pieces;
    for (const QString& name :
         {u"commonRules"_s, u"sportInstructions"_s, u"fallbackInstructions"_s, u"styleRules"_s}) {
        pieces.append(templates.value(name).toString());
    }
    if (query.includeOffenseDefense && query.sport == Sport::football) {
        pieces.append(templates.value(u"offenseDefenseInstructions"_s).toString());
    }
    return pieces.join(u"\n\n"_s);
}

QStringList lines(const QString& text) {
    QStringList all = text.split(u'\n', Qt::SkipEmptyParts);
    all.sort();
    return all;
}

} // namespace

TEST(TemplateMaker, OneImageGetsEachRuleOfABatchOnce) {
    const PromptLibrary library;
    for (const PromptQuery& query : allQueries()) {
        const QJsonObject templates = makeTemplates(query, library);
        const QString single = singleRules(templates, query);
        EXPECT_EQ(lines(single), lines(batchRules(query).join(u'\n'))) << qPrintable(cacheKey(query));
        EXPECT_FALSE(single.contains(u"\n\n\n"_s)) << qPrintable(cacheKey(query));
        EXPECT_EQ(templates.size(), 6);
        for (const QJsonValue text : templates) {
            EXPECT_FALSE(text.toString().isEmpty()) << qPrintable(cacheKey(query));
        }
        EXPECT_EQ(lines(templates.value(u"audioInstructions"_s).toString()),
                  lines(library.audioRules(query.prioritizeAudioFiles)));
    }
}

TEST(PromptServer, EveryCombinationIsServed) {
    const PromptServer server({.apiKey = QString::fromLatin1(key)}, builtInTemplates());
    for (const PromptQuery& query : allQueries()) {
        const Answer answer = ask(server.url(), get(target(query), keyHeader(key)));
        ASSERT_EQ(answer.status, 200) << answer.body.toStdString();
        EXPECT_EQ(answer.type, "application/json");
        const QJsonObject reply = answer.json();
        EXPECT_EQ(reply.value(u"version"_s).toString(), u"v1"_s);
        EXPECT_EQ(reply.value(u"style"_s).toString(), rawValue(query.style));
        EXPECT_EQ(reply.value(u"sport"_s).toString(), rawValue(query.sport));
        EXPECT_EQ(reply.value(u"templates"_s).toObject(), makeTemplates(query, PromptLibrary()));
        const QJsonObject metadata = reply.value(u"metadata"_s).toObject();
        EXPECT_EQ(metadata.value(u"cacheKey"_s).toString(), cacheKey(query));
        EXPECT_TRUE(parseIso8601(metadata.value(u"fetchedAt"_s).toString()));
    }
}

TEST(PromptServer, WhatItDoesNotServeItRefuses) {
    const QByteArray good = target();
    const auto keyed = [](const QByteArray& path) { return get(path, keyHeader(key)); };
    const auto with = [&](const QByteArray& from, const QByteArray& to) {
        return keyed(QByteArray(good).replace(from, to));
    };
    const struct {
        QByteArray request;
        int status;
        QByteArray words;
    } rows[] = {
        {keyed(good), 200, "\"templates\""},
        {get(good, "x-api-key: " + key + "\r\n"), 200, "\"templates\""},
        {keyed(good + "&more=1"), 200, "\"templates\""},
        {get(good), 401, "X-API-Key"},
        {get(good, "X-API-Key:\r\n"), 401, "X-API-Key"},
        {get(good, keyHeader("pk-012345678")), 401, "X-API-Key"},
        {get(good, keyHeader(key + key)), 401, "X-API-Key"},
        {get("/api/prompt?style=no"), 401, "X-API-Key"},
        {keyed("/api/prompt"), 400, "The parameter \"style\" is missing."},
        {with("style=apSports", "style="), 400,
         "The parameter \"style\" cannot be \"\"; it is one of: apSports,"},
        {with("style=apSports", "style=APSPORTS"), 400, "cannot be \"APSPORTS\""},
        {with("football", "curling"), 400, "The parameter \"sport\" cannot be \"curling\""},
        {with("attemptCaption", "%FF%00%3Cb%3E"), 400, "fallbackBehavior"},
        {with("includeOffenseDefense=false", "includeOffenseDefense=1"), 400, "it is one of: true, false."},
        {with("&prioritizeAudioFiles=false", ""), 400, "The parameter \"prioritizeAudioFiles\" is missing."},
        {with("version=v1", "version=v2"), 400,
         "The parameter \"version\" cannot be \"v2\"; it is one of: v1."},
        {with("version=v1", "version=v1&version=v2"), 400, "more than once"},
        {with("football", QByteArray(4000, 'x')), 400, "\"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx\";"},
        {keyed("/"), 404, "GET /api/prompt"},
        {keyed("/api/prompt/"), 404, ""},
        {keyed("/api/prompts"), 404, ""},
        {keyed("/api/../api/prompt"), 404, ""},
        {keyed("/" + QByteArray(4000, 'a')), 404, ""},
        {keyed(good).replace("GET ", "POST ").replace("\r\n\r\n", "\r\nContent-Length: 0\r\n\r\n"), 404, ""},
    };
    const PromptServer server({.apiKey = QString::fromLatin1(key)}, builtInTemplates());
    for (const auto& row : rows) {
        const Answer answer = ask(server.url(), row.request);
        EXPECT_EQ(answer.status, row.status) << row.request.left(200).toStdString();
        EXPECT_TRUE(answer.body.contains(row.words)) << answer.body.toStdString();
        EXPECT_EQ(answer.type, row.status == 200 ? "application/json" : "text/plain; charset=utf-8");
        EXPECT_FALSE(answer.body.contains(key));
    }
}

TEST(PromptServer, WithoutAKeyItServesEverybody) {
    const PromptServer server({}, builtInTemplates());
    for (const QByteArray& header : {"", "X-API-Key: \r\n", "X-API-Key: x\r\n"}) {
        EXPECT_EQ(ask(server.url(), get(target(), header)).status, 200) << header.constData();
    }
}

TEST(PromptServer, ASourceThatFailsIsAServerError) {
    const PromptServer server({},
                              [](const PromptQuery&) -> QJsonObject { throw Error(u"No rules today."_s); });
    const Answer answer = ask(server.url(), get(target()));
    EXPECT_EQ(answer.status, 500);
    EXPECT_EQ(answer.body, "No rules today.");
}

TEST(PromptServer, ItAnswersManyAtOnce) {
    const PromptServer server({}, builtInTemplates());
    std::atomic_int served = 0;
    std::vector<std::thread> clients;
    for (int client = 0; client < 8; ++client) {
        clients.emplace_back([&] {
            for (int round = 0; round < 10; ++round) {
                served += ask(server.url(), get(target())).status == 200 ? 1 : 0;
            }
        });
    }
    for (std::thread& client : clients) {
        client.join();
    }
    EXPECT_EQ(served, 80);
}

TEST(PromptServer, ItStartsAndStopsAtOnce) {
    QElapsedTimer time;
    time.start();
    for (int round = 0; round < 50; ++round) {
        const PromptServer server({}, builtInTemplates());
        if (round % 2 == 0) {
            EXPECT_EQ(ask(server.url(), get(target())).status, 200);
        }
    }
    EXPECT_LT(time.elapsed(), 5000);

    QTcpSocket idle; // delays the stop, but not for long
    {
        const PromptServer server({}, builtInTemplates());
        idle.connectToHost(server.url().host(), static_cast<quint16>(server.url().port()));
        ASSERT_TRUE(idle.waitForConnected());
        time.restart();
    }
    EXPECT_LT(time.elapsed(), 5000);
}

TEST(PromptServer, APortBelongsToOneServer) {
    std::optional<PromptServer> first(std::in_place, PromptServerOptions{}, builtInTemplates());
    const PromptServer second({}, builtInTemplates());
    EXPECT_NE(first->url(), second.url());
    const PromptServerOptions samePort{.port = first->url().port()};
    EXPECT_THROW(PromptServer(samePort, builtInTemplates()), Error);
    EXPECT_THROW(PromptServer({.address = u"no address"_s}, builtInTemplates()), Error);
    first.reset();
    const PromptServer next(samePort, builtInTemplates()); // the port is free again
    EXPECT_EQ(ask(next.url(), get(target())).status, 200);
}

} // namespace ostrelle
