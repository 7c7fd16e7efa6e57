// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/UpdateChecker.h"

#include "core/Attempt.h"
#include "core/Error.h"

#include <QPointer>
#include <chrono>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString lastCheckKey = u"Updates_LastCheck"_s;
const QString lastFeedKey = u"Updates_LastFeed"_s;
constexpr qint64 secondsOfADay = qint64{24} * 60 * 60;

/// A test's server is on this machine.
bool isSafe(const QUrl& url) {
    return url.scheme() == u"https" || url.host() == u"127.0.0.1";
}

} // namespace

UpdateChecker::UpdateChecker(UpdateAddress address, DefaultsStore& defaults, Clock& clock, PlainLog& log)
    : m_address(std::move(address)), m_defaults(defaults), m_clock(clock), m_log(log), m_channel(clock) {}

void UpdateChecker::checkForUpdatesInBackground() {
    const auto last = m_defaults.get<QDateTime>(lastCheckKey);
    const qint64 since = last ? last->secsTo(m_clock.now()) : secondsOfADay;
    if (since < 0 || since >= secondsOfADay) { // below 0 the clock was set back
        begin(false);
    }
}

void UpdateChecker::begin(bool isAsked) {
    if (isBuiltIn() && !m_isChecking) {
        m_tasks.spawn(check(isAsked));
    }
}

QCoro::Task<> UpdateChecker::check(bool isAsked) {
    const QPointer<UpdateChecker> self(this);
    m_isChecking = true;
    Q_EMIT canCheckForUpdatesChanged();
    m_defaults.set(lastCheckKey, m_clock.now());
    UpdateResult result;
    if (isSafe(m_address.url)) {
        const QNetworkRequest request(m_address.url);
        const auto reply = co_await attempt(m_channel.get(request, std::chrono::seconds(15)));
        if (!self) {
            co_return; // the program is ending
        }
        result = reply ? judge(*reply) : UpdateResult{.reason = reply.words()};
    } else {
        result.reason = u"The address of the list of versions is not a secure one."_s;
    }
    m_isChecking = false;
    result.isAsked = isAsked;
    if (result.kind == UpdateResult::Kind::failed) {
        m_log.print(u"[AppDelegate] Could not check for updates: "_s + result.reason);
    }
    Q_EMIT canCheckForUpdatesChanged();
    Q_EMIT checked(result);
}

UpdateResult UpdateChecker::judge(const HttpReply& reply) {
    if (reply.status != 200) {
        return {.reason = u"The server answered with status %1."_s.arg(reply.status.value_or(0))};
    }
    const auto feed = attemptNow([&] { return UpdateFeed::read(reply.body, m_address.publicKey); });
    if (!feed) {
        return {.reason = feed.words()};
    }
    const auto lastFeed = m_defaults.get<QDateTime>(lastFeedKey);
    if (lastFeed && feed->published < *lastFeed) {
        return {.reason = u"The list of versions is older than one that was seen before."_s};
    }
    if (feed->version < m_address.current) {
        return {.reason = u"The list of versions names only a lower version."_s};
    }
    m_defaults.set(lastFeedKey, feed->published);
    return {.kind =
                feed->version > m_address.current ? UpdateResult::Kind::newer : UpdateResult::Kind::current,
            .version = feed->version.toString(),
            .notes = feed->notes};
}

} // namespace ostrelle
