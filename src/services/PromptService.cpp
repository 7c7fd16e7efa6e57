// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/PromptService.h"

#include "core/Attempt.h"
#include "core/Text.h"
#include "services/PromptError.h"
#include "services/PromptResponse.h"
#include "services/TransportError.h"
#include "services/WireText.h"

#include <QUrlQuery>
#include <optional>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr int httpOk = 200;
constexpr int httpUnauthorized = 401;

/// The part of the key that may be logged: a short one would be logged in full.
QString keyPrefix(const QString& key) {
    constexpr qsizetype shown = 10;
    return characterCount(key) > shown ? firstCharacters(key, shown) : QString();
}

QUrl promptUrl(const QUrl& base, const PromptQuery& query) {
    QUrlQuery items;
    for (const auto& [name, value] : queryItems(query)) {
        items.addQueryItem(name, QString::fromLatin1(QUrl::toPercentEncoding(value)));
    }
    QUrl url = base;
    url.setPath(u"/api/prompt"_s);
    url.setQuery(items);
    return url;
}

void throwIfGone(const std::weak_ptr<const bool>& service) {
    if (service.expired()) {
        throw PromptError::networkError(u"The program is closing."_s);
    }
}

bool isHttp(const QUrl& url) {
    return url.isValid() && !url.host().isEmpty() && (url.scheme() == u"https" || url.scheme() == u"http");
}

} // namespace

PromptService::PromptService(PromptAccess access, QString cacheFile, PlainLog& log, Clock& clock)
    : m_access(std::move(access)), m_log(log), m_cache(std::move(cacheFile), clock, log), m_channel(clock) {}

QCoro::Task<PromptTemplates> PromptService::fetchPrompts(PromptQuery query, Fetch fetch) {
    const std::weak_ptr<const bool> life = m_life;
    const QString key = cacheKey(query);
    printQuery(query);
    if (fetch == Fetch::always) {
        print(u"ℹ️ Force refresh requested, skipping cache"_s);
    } else {
        const std::optional<PromptTemplates> cached = co_await m_cache.find(key);
        throwIfGone(life);
        if (cached) {
            print(u"✅ Using cached prompt for key: "_s + key);
            co_return *cached;
        }
        print(u"ℹ️ No valid cache found for key: "_s + key);
    }
    print(u"🌐 Fetching fresh prompt from server..."_s);
    const Attempt<PromptTemplates> templates = co_await attempt(fetchFromServer(query));
    if (!templates) {
        if (const auto error = templates.failureAs<PromptError>(); error && !life.expired()) {
            printFailure(*error);
        }
        templates.rethrow();
    }
    printSizes(*templates);
    m_cache.store(key, *templates);
    co_return *templates;
}

/// Throws only PromptError. Does not touch the service after it is gone.
QCoro::Task<PromptTemplates> PromptService::fetchFromServer(PromptQuery query) {
    const std::weak_ptr<const bool> life = m_life;
    const QNetworkRequest toSend = request(query);
    print(u"📡 Sending request..."_s);
    const Attempt<HttpReply> reply = co_await attempt(m_channel.get(toSend, idleTimeOut));
    throwIfGone(life);
    if (!reply) {
        print(u"❌ Network error: "_s + reply.words());
        print(u"  Error type: TransportError"_s);
        throw PromptError::networkError(reply.words());
    }
    co_return templatesIn(*reply);
}

QNetworkRequest PromptService::request(const PromptQuery& query) {
    const QUrl url = promptUrl(m_access.url, query);
    if (!isHttp(url)) {
        print(u"❌ Failed to build URL from base: "_s + m_access.url.toString(QUrl::RemoveUserInfo));
        throw PromptError::invalidURL();
    }
    QNetworkRequest request(url);
    request.setRawHeader("X-API-Key", m_access.key.toUtf8());
    request.setRawHeader("Accept", "application/json");
    print(u"🌐 Request URL: "_s + url.toString(QUrl::FullyEncoded | QUrl::RemoveUserInfo));
    print(u"🔑 API Key: "_s + keyPrefix(m_access.key) + u"... (length: "_s +
          QString::number(characterCount(m_access.key)) + u')');
    return request;
}

PromptTemplates PromptService::templatesIn(const HttpReply& reply) {
    try {
        return decodedReply(reply);
    } catch (const PromptError& error) {
        print(u"❌ PromptError: "_s + error.localizedDescription());
        throw;
    }
}

PromptTemplates PromptService::decodedReply(const HttpReply& reply) {
    if (!reply.status) {
        print(u"❌ Invalid response type"_s);
        throw PromptError::invalidResponse();
    }
    const QString code = QString::number(*reply.status);
    print(u"📨 Response: HTTP "_s + code);
    print(u"📦 Data size: "_s + QString::number(reply.body.size()) + u" bytes"_s);
    if (*reply.status == httpUnauthorized) {
        print(u"❌ Unauthorized - API key rejected"_s);
        throw PromptError::unauthorized();
    }
    if (*reply.status != httpOk) {
        const QString text = shown(reply.body, u"Unknown error"_s);
        print(u"❌ Server error HTTP "_s + code + u": "_s + text);
        throw PromptError::serverError(u"HTTP "_s + code + u": "_s + text);
    }
    try {
        const PromptTemplates templates = decodePromptResponse(reply.body);
        print(u"✅ Successfully decoded response"_s);
        return templates;
    } catch (const PromptError& error) {
        constexpr qsizetype charactersShown = 500;
        print(u"❌ Decoding error: "_s + error.localizedDescription());
        print(u"Response body: "_s + firstCharacters(shown(reply.body, u"<non-utf8>"_s), charactersShown));
        throw;
    }
}

QString PromptService::shown(const QByteArray& body, const QString& otherwise) const {
    return withoutKey(strictUtf8(body).value_or(otherwise), m_access.key);
}

void PromptService::print(const QString& text) {
    m_log.print(u"[PromptService] "_s + text);
}

void PromptService::printQuery(const PromptQuery& query) {
    print(u"----------------------------------------"_s);
    print(u"Fetching prompts for:"_s);
    for (const auto& [name, value] : queryItems(query)) {
        print(u"  "_s + name + u": "_s + value);
    }
}

void PromptService::printSizes(const PromptTemplates& templates) {
    const auto printSize = [this](const QString& name, const QString& text) {
        print(u"  "_s + name + u": "_s + QString::number(characterCount(text)) + u" characters"_s);
    };
    print(u"✅ Successfully fetched templates from server"_s);
    printSize(u"Common rules"_s, templates.commonRules);
    printSize(u"Sport instructions"_s, templates.sportInstructions);
    printSize(u"Style rules"_s, templates.styleRules);
}

void PromptService::printFailure(const PromptError& error) {
    print(u"❌ ERROR fetching from server: "_s + error.localizedDescription());
    print(u"  Error type: PromptError"_s);
    print(u"  Error description: "_s + error.localizedDescription());
}

} // namespace ostrelle
