// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "standins/MemorySecrets.h"
#include "support/VirtualClock.h"

#include <QCoreApplication>
#include <QStringList>
#include <chrono>

namespace ostrelle {

/// A secret store that takes a virtual second for each operation, and records each one as it begins.
class SlowSecrets : public MemorySecrets {
public:
    explicit SlowSecrets(VirtualClock& clock) : m_clock(clock) {}

    /// Lets this many operations end, or all if there are fewer.
    void end(int operations = 100) {
        for (; operations > 0 && m_clock.waiting() > 0; --operations) {
            m_clock.advance(std::chrono::seconds(1));
            QCoreApplication::sendPostedEvents();
        }
    }

    QCoro::Task<int> save(QString service, QString account, QString secret) override {
        co_await begin(QStringLiteral("save ") + secret);
        co_return co_await MemorySecrets::save(service, account, secret);
    }
    QCoro::Task<std::optional<QString>> load(QString service, QString account) override {
        co_await begin(QStringLiteral("load"));
        co_return co_await MemorySecrets::load(service, account);
    }
    QCoro::Task<int> remove(QString service, QString account) override {
        co_await begin(QStringLiteral("remove"));
        co_return co_await MemorySecrets::remove(service, account);
    }

    QStringList begun;

private:
    QCoro::Task<> begin(QString operation) {
        begun.append(operation);
        return m_clock.sleep(std::chrono::seconds(1));
    }

    VirtualClock& m_clock;
};

} // namespace ostrelle
