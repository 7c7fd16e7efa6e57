// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/PromptQuery.h"
#include "platform/Clock.h"
#include "platform/PlainLog.h"
#include "services/HttpChannel.h"
#include "services/PromptCache.h"
#include "services/PromptTemplates.h"

#include <QCoroTask>
#include <QString>
#include <QUrl>
#include <chrono>
#include <memory>

namespace ostrelle {

class PromptError;

/// The address of the prompt service and this program's key to it.
struct PromptAccess {
    QUrl url;    ///< scheme and host
    QString key; ///< never logged in full
};

/// Fetches prompt templates from the prompt server and caches them. Has no fallback: failures go to the
/// caller. Destroying it fails the fetches in flight.
class PromptService {
public:
    enum class Fetch {
        unlessCached,
        always, ///< the result is cached all the same
    };

    /// How long the server may be silent.
    static constexpr std::chrono::milliseconds idleTimeOut = std::chrono::seconds(30);

    /// `cacheFile` and its folder need not exist yet. Log and clock must outlive the service.
    PromptService(PromptAccess access, QString cacheFile, PlainLog& log, Clock& clock);

    /// The templates for the query. Throws PromptError.
    QCoro::Task<PromptTemplates> fetchPrompts(PromptQuery query, Fetch fetch = Fetch::unlessCached);

    /// Removes all templates, from memory and disk. Returns at once.
    void clearCache() { m_cache.clear(); }
    /// Removes those older than an hour. Returns at once.
    void clearExpiredCache() { m_cache.clearExpired(); }
    PromptCache::Counts cacheCounts() const { return m_cache.counts(); }
    /// Resumes when the cache is saved. Await it before the program ends.
    QCoro::Task<> finishPending() { return m_cache.finishPending(); }

private:
    QCoro::Task<PromptTemplates> fetchFromServer(PromptQuery query);
    QNetworkRequest request(const PromptQuery& query);
    PromptTemplates templatesIn(const HttpReply& reply);
    PromptTemplates decodedReply(const HttpReply& reply);
    QString shown(const QByteArray& body, const QString& otherwise) const;
    void print(const QString& text);
    void printQuery(const PromptQuery& query);
    void printSizes(const PromptTemplates& templates);
    void printFailure(const PromptError& error);

    PromptAccess m_access;
    PlainLog& m_log;
    PromptCache m_cache;
    HttpChannel m_channel;
    std::shared_ptr<const bool> m_life = std::make_shared<const bool>(true); // tells a fetch that we are gone
};

} // namespace ostrelle
