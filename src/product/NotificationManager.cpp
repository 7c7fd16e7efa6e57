// SPDX-License-Identifier: GPL-3.0-or-later
#include "product/NotificationManager.h"

#include "core/Attempt.h"
#include "core/Text.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString processingThread = u"ostrelle-processing"_s;

/// For failures that cannot wait until the photographer next looks.
DesktopNotification criticalNotification(const QString& title, const QString& body, const QString& thread) {
    return {.title = title,
            .body = body,
            .threadIdentifier = thread,
            .sound = DesktopNotification::Sound::critical,
            .interruption = DesktopNotification::Interruption::critical};
}

QString images(qint64 count) {
    return QString::number(count) + u" image"_s + plural(count);
}

QString failureBody(qint64 count, const QStringList& files, const std::optional<QString>& detail) {
    const QString hint =
        files.isEmpty() ? u"Check permissions and try again."_s : u"Files: "_s + shortNameList(files) + u'.';
    const QString ending = detail && !detail->isEmpty() ? u' ' + *detail : QString();
    return u"Failed to caption "_s + images(count) + u". "_s + hint + ending;
}

QString rateLimitBody(qint64 count, const QStringList& files, const std::optional<QString>& detail) {
    const QString names = files.isEmpty() ? QString() : u": "_s + shortNameList(files);
    const QString ending = detail ? u" Details: "_s + *detail : QString();
    return u"OpenAI API rate limit reached. "_s + images(count) + u" failed"_s + names +
           u". Processing will resume automatically when the limit resets."_s + ending;
}

QString permissionBody(qint64 count, const QStringList& files, const std::optional<QString>& detail) {
    const QString names = files.isEmpty() ? QString() : u" Files: "_s + shortNameList(files) + u'.';
    const QString ending = detail ? u" Error: "_s + *detail : QString();
    return u"Failed to write captions to "_s + images(count) + u'.' + names +
           u" Please grant folder access permissions."_s + ending;
}

} // namespace

QCoro::Task<bool> NotificationManager::requestPermission() {
    const auto available = co_await attempt(m_center.isAvailable());
    if (!available) {
        m_log.print(u"[NotificationManager] Permission request failed: "_s + available.words());
        co_return false;
    }
    m_log.print(*available ? u"[NotificationManager] Permission granted: true"_s
                           : u"[NotificationManager] Permission granted: false"_s);
    co_return *available;
}

QCoro::Task<bool> NotificationManager::hasPermission() {
    const auto available = co_await attempt(m_center.isAvailable());
    co_return available.valueOr(false);
}

QCoro::Task<> NotificationManager::postProcessingResult(qint64 successCount, qint64 failureCount,
                                                        QStringList failedFiles,
                                                        std::optional<QString> detail) {
    if (successCount >= 1) {
        const DesktopNotification success{.title = u"Ostrelle Captioning Complete"_s,
                                          .body = u"Successfully captioned "_s + images(successCount) + u'.',
                                          .threadIdentifier = processingThread};
        co_await post(success, u"Posted success notification"_s, u"Failed to post success notification"_s);
    }
    if (failureCount >= 1) {
        const DesktopNotification failure =
            criticalNotification(u"Ostrelle Captioning Failed"_s,
                                 failureBody(failureCount, failedFiles, detail), processingThread);
        co_await post(failure, u"Posted critical failure notification"_s,
                      u"Failed to post failure notification"_s);
    }
}

QCoro::Task<> NotificationManager::postRateLimitFailure(qint64 failureCount, QStringList failedFiles,
                                                        std::optional<QString> detail) {
    const DesktopNotification failure = criticalNotification(
        u"Rate Limit Exceeded"_s, rateLimitBody(failureCount, failedFiles, detail), u"ostrelle-ratelimit"_s);
    co_await post(failure, u"Posted rate limit failure notification"_s,
                  u"Failed to post rate limit notification"_s);
}

QCoro::Task<> NotificationManager::postPermissionFailure(qint64 failureCount, QStringList failedFiles,
                                                         std::optional<QString> detail) {
    const DesktopNotification failure =
        criticalNotification(u"Permission Error \u2014 Action Required"_s,
                             permissionBody(failureCount, failedFiles, detail), u"ostrelle-permissions"_s);
    co_await post(failure, u"Posted permission failure notification"_s,
                  u"Failed to post permission notification"_s);
}

QCoro::Task<> NotificationManager::postConfigurationMissing(QString item) {
    const DesktopNotification notification{
        .title = u"Configuration Required"_s,
        .body = item + u" is missing. Please configure it in Settings to enable auto-processing."_s,
        .threadIdentifier = u"ostrelle-config"_s,
        .sound = DesktopNotification::Sound::critical};
    co_await post(notification, u"Posted configuration missing notification"_s,
                  u"Failed to post notification"_s);
}

QCoro::Task<bool> NotificationManager::postNews(QString title, QString body) {
    const DesktopNotification news{.title = title, .body = body, .threadIdentifier = u"ostrelle-news"_s};
    const bool isPosted = co_await post(news, u"Posted notification"_s, u"Failed to post notification"_s);
    co_return isPosted;
}

QCoro::Task<bool> NotificationManager::post(DesktopNotification notification, QString postedLine,
                                            QString failedLine) {
    const bool isPermitted = co_await hasPermission();
    if (!isPermitted) {
        m_log.print(u"[NotificationManager] No permission to post notification"_s);
        co_return false;
    }
    const auto posted = co_await attempt(m_center.post(notification));
    m_log.print(u"[NotificationManager] "_s +
                (posted ? postedLine + u": "_s + notification.body : failedLine + u": "_s + posted.words()));
    co_return static_cast<bool>(posted);
}

} // namespace ostrelle
