// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/SecretStore.h"

#include <QCoroTask>
#include <optional>

namespace ostrelle {

/// Passwords in the desktop's keyring, over the Secret Service. A status is a QKeychain::Error: 7 when the
/// desktop has no such service or its keyring is locked. Never falls back to plain storage. An operation goes
/// on when its task is dropped, and needs a running event loop to end.
class DesktopSecretStore : public SecretStore {
public:
    QCoro::Task<int> save(QString service, QString account, QString secret) override;
    QCoro::Task<std::optional<QString>> load(QString service, QString account) override;
    QCoro::Task<int> remove(QString service, QString account) override;
    QCoro::Task<bool> unlocked(QString service, QString account) override;
};

} // namespace ostrelle
