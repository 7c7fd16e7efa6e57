// SPDX-License-Identifier: GPL-3.0-or-later
#include "product/UsageReporting.h"

#include "product/ApiKey.h"

#include <QCryptographicHash>
#include <QUuid>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString userIdKey = u"Analytics_UserId"_s;
const QString switchKey = u"Analytics_IsSendingOn"_s;
const QString switchSeenKey = u"Analytics_IsSwitchSeen"_s;

} // namespace

bool mayReportUsage(const DefaultsStore& defaults) {
    return defaults.get<bool>(switchSeenKey).value_or(false) && isUsageSwitchOn(defaults);
}

bool isUsageSwitchOn(const DefaultsStore& defaults) {
    return defaults.get<bool>(switchKey).value_or(true);
}

void setUsageSwitchOn(DefaultsStore& defaults, bool isOn) {
    defaults.set(switchKey, isOn);
}

void markUsageSwitchSeen(DefaultsStore& defaults) {
    if (!defaults.get<bool>(switchSeenKey).value_or(false)) {
        defaults.set(switchSeenKey, true);
    }
}

QString anonymousUserId(DefaultsStore& defaults) {
    if (const auto stored = defaults.get<QString>(userIdKey)) {
        return *stored;
    }
    const QString made = QUuid::createUuid().toString(QUuid::WithoutBraces);
    defaults.set(userIdKey, made);
    return made;
}

std::optional<QString> apiKeyId(const DefaultsStore& defaults) {
    const QString key = apiKey(defaults);
    if (key.isEmpty()) {
        return std::nullopt;
    }
    const QByteArray digest = QCryptographicHash::hash(key.toUtf8(), QCryptographicHash::Sha256);
    return QString::fromLatin1(digest.toHex().first(16));
}

} // namespace ostrelle
