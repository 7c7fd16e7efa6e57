// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/SecretStore.h"

#include <QCoroTask>
#include <QMap>
#include <optional>

namespace ostrelle {

/// A secret store that lasts as long as the test, keyed "service/account". With `status` set, nothing works.
class MemorySecrets : public SecretStore {
public:
    QCoro::Task<int> save(QString service, QString account, QString secret) override {
        if (status == 0) {
            secrets.insert(service + u'/' + account, secret);
        }
        co_return status;
    }
    QCoro::Task<std::optional<QString>> load(QString service, QString account) override {
        const QString key = service + u'/' + account;
        co_return status == 0 && secrets.contains(key) ? std::optional(secrets.value(key)) : std::nullopt;
    }
    QCoro::Task<int> remove(QString service, QString account) override {
        if (status == 0) {
            secrets.remove(service + u'/' + account);
        }
        co_return status;
    }

    QMap<QString, QString> secrets;
    int status = 0;
};

} // namespace ostrelle
