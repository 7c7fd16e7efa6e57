// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "standins/MemorySecrets.h"

#include <QCoroFuture>
#include <QCoroTask>
#include <QPromise>
#include <QString>
#include <optional>

namespace ostrelle {

/// A secret store that is locked until the test unlocks it.
class LockedSecrets : public MemorySecrets {
public:
    LockedSecrets() { m_unlocking.start(); }

    void unlock() {
        m_isLocked = false;
        m_unlocking.finish();
    }

    QCoro::Task<std::optional<QString>> load(QString service, QString account) override {
        return m_isLocked ? none() : MemorySecrets::load(service, account);
    }
    QCoro::Task<bool> unlocked(QString service, QString account) override {
        if (!m_isLocked || !secrets.contains(service + u'/' + account)) {
            co_return false;
        }
        QFuture<void> unlocking = m_unlocking.future();
        co_await unlocking;
        co_return true;
    }

private:
    static QCoro::Task<std::optional<QString>> none() { co_return std::nullopt; }

    bool m_isLocked = true;
    QPromise<void> m_unlocking;
};

} // namespace ostrelle
