// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/SettingsFigures.h"

#include "product/ApiKey.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

const QString connectionSucceeded = u"success"_s;

bool saveApiKey(DefaultsStore& defaults, SettingsStore& settings, const QString& entered) {
    const QString key = entered.trimmed();
    if (key.isEmpty()) {
        return false;
    }
    defaults.set(apiKeyName, key);
    settings.setHasAPIKey(true);
    return true;
}

void clearApiKey(DefaultsStore& defaults, SettingsStore& settings) {
    defaults.remove(apiKeyName);
    settings.setHasAPIKey(false);
}

std::optional<QString> connectionTestRefusal(const SettingsStore& settings) {
    if (settings.ftpHost().isEmpty() || settings.ftpUsername().isEmpty() ||
        settings.ftpPassword().isEmpty()) {
        return u"Please fill in all required fields"_s;
    }
    return std::nullopt;
}

QString connectionStatusText(const QString& status) {
    return status == connectionSucceeded ? u"Connection successful"_s : status;
}

void clearFtpSettings(SettingsStore& settings) {
    settings.setFtpHost({});
    settings.setFtpUsername({});
    settings.setFtpPassword({});
    settings.setFtpPath(u"/"_s);
    settings.setFtpPort(defaultPort(TransferProtocol::ftp));
    settings.setFtpConnectionStatus(std::nullopt);
}

StatisticsTexts StatisticsTexts::of(const StatusStore& status, const UsageTracker& usage) {
    return {.lifetimeImages = QString::number(status.lifetimeImagesProcessed()),
            .successRate = QString::number(status.successRate(), 'f', 1) + u'%',
            .successCounts = u"(%1 processed, %2 failed)"_s.arg(status.totalProcessedAllTime())
                                 .arg(status.totalFailedAllTime()),
            .averageTime = QString::number(status.averageProcessingTime(), 'f', 1) + u's',
            .todaysCost = u'$' + QString::number(usage.todaysCost(), 'f', 4),
            .totalCost = u'$' + QString::number(usage.totalCostAllTime(), 'f', 2)};
}

QString promptCacheText(qint64 count, qint64 expired) {
    const QString text = u"Cached Prompts: %1"_s.arg(count);
    return expired > 0 ? text + u" (%1 expired)"_s.arg(expired) : text;
}

} // namespace ostrelle
