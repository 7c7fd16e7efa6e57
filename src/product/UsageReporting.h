// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"

#include <QByteArray>
#include <QCoroTask>
#include <QString>
#include <QUrl>
#include <optional>

namespace ostrelle {

/// Whether usage figures may leave the machine: while the user has the switch on, and not before he has seen
/// it.
bool mayReportUsage(const DefaultsStore& defaults);

/// The user's switch for it.
bool isUsageSwitchOn(const DefaultsStore& defaults);
void setUsageSwitchOn(DefaultsStore& defaults, bool isOn);
/// The user has the switch before his eyes.
void markUsageSwitchSeen(DefaultsStore& defaults);

/// A random UUID that stands for this installation, made when first asked for. It has nothing to do with any
/// other identity.
QString anonymousUserId(DefaultsStore& defaults);

/// 16 hexadecimal digits of the SHA-256 of the stored API key, by which two installations with one key can be
/// told together; nothing without a key.
std::optional<QString> apiKeyId(const DefaultsStore& defaults);

/// The answer of the service that takes the usage figures.
struct UsageReportAnswer {
    int status = 0; ///< of HTTP
    QString body = {};
};

/// The service that takes the usage figures.
class UsageReports {
public:
    virtual ~UsageReports() = default;

    /// Its full address; empty when none is built in, and then nothing is ever sent.
    virtual QUrl url() const = 0;
    /// Sends a JSON object. Throws when no complete answer came.
    virtual QCoro::Task<UsageReportAnswer> post(QByteArray json) = 0;
};

} // namespace ostrelle
