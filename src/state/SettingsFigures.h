// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"
#include "state/SettingsStore.h"
#include "state/StatusStore.h"
#include "state/UsageTracker.h"

#include <QString>
#include <optional>

namespace ostrelle {

/// Stores the API key as the user entered it, without the white space around it. False, and nothing stored,
/// when no key is left.
bool saveApiKey(DefaultsStore& defaults, SettingsStore& settings, const QString& entered);
void clearApiKey(DefaultsStore& defaults, SettingsStore& settings);

/// What keeps the connection to the remote server from being tested; nothing when it can be.
std::optional<QString> connectionTestRefusal(const SettingsStore& settings);

/// The connection status of a test that succeeded, and what is shown for a status.
extern const QString connectionSucceeded;
QString connectionStatusText(const QString& status);

/// Back to no server. The protocol stays.
void clearFtpSettings(SettingsStore& settings);

/// The figures of the statistics, in the program's own notation whatever the user's language.
struct StatisticsTexts {
    QString lifetimeImages;
    QString successRate;
    QString successCounts;
    QString averageTime;
    QString todaysCost;
    QString totalCost;

    static StatisticsTexts of(const StatusStore& status, const UsageTracker& usage);
};

/// "Cached Prompts: 3 (1 expired)".
QString promptCacheText(qint64 count, qint64 expired);

} // namespace ostrelle
