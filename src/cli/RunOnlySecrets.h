// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DesktopSecretStore.h"
#include "platform/SecretStore.h"

#include <QCoroTask>
#include <optional>

namespace ostrelle {

/// The desktop's keyring, read-only: a password that is given for this run is not stored. The keyring is not
/// touched, as it might ask the user, unless allowReading() has been called.
class RunOnlySecrets : public SecretStore {
public:
    void allowReading() { m_isReadable = true; }

    QCoro::Task<int> save(QString, QString, QString) override { co_return 0; }
    QCoro::Task<std::optional<QString>> load(QString service, QString account) override {
        if (!m_isReadable) {
            co_return std::nullopt;
        }
        co_return co_await m_keyring.load(service, account);
    }
    QCoro::Task<int> remove(QString, QString) override { co_return 0; }

private:
    DesktopSecretStore m_keyring;
    bool m_isReadable = false;
};

} // namespace ostrelle
