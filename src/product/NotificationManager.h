// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/NotificationCenter.h"
#include "platform/PlainLog.h"

#include <QCoroTask>
#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// Notifies the photographer, who is usually looking at another program, of how a caption run ended. A
/// message that cannot be posted is logged and dropped; nothing here throws.
class NotificationManager {
public:
    /// Both must outlive the manager and its tasks.
    NotificationManager(NotificationCenter& center, PlainLog& log) : m_center(center), m_log(log) {}
    NotificationManager(const NotificationManager&) = delete;
    NotificationManager& operator=(const NotificationManager&) = delete;

    /// hasPermission() with a log line, for the start of the program.
    QCoro::Task<bool> requestPermission();
    /// True when messages can be posted now.
    QCoro::Task<bool> hasPermission();

    /// Posts a message about the successes if any, then one about the failures if any.
    QCoro::Task<> postProcessingResult(qint64 successCount, qint64 failureCount, QStringList failedFiles,
                                       std::optional<QString> detail = {});
    QCoro::Task<> postRateLimitFailure(qint64 failureCount, QStringList failedFiles,
                                       std::optional<QString> detail = {});
    QCoro::Task<> postPermissionFailure(qint64 failureCount, QStringList failedFiles,
                                        std::optional<QString> detail = {});
    /// `item` names what is missing, such as "OpenAI API Key".
    QCoro::Task<> postConfigurationMissing(QString item);
    /// Says something that the user need not act on. False when it could not be posted.
    QCoro::Task<bool> postNews(QString title, QString body);

private:
    QCoro::Task<bool> post(DesktopNotification notification, QString postedLine, QString failedLine);

    NotificationCenter& m_center;
    PlainLog& m_log;
};

} // namespace ostrelle
