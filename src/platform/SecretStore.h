// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <QString>
#include <optional>

namespace ostrelle {

/// Passwords kept by a desktop service under a service and an account name. A status is 0 for success,
/// otherwise the store's own error number. No operation throws.
class SecretStore {
public:
    virtual ~SecretStore() = default;

    virtual QCoro::Task<int> save(QString service, QString account, QString secret) = 0;
    /// The secret, or nothing when there is none or it cannot be read.
    virtual QCoro::Task<std::optional<QString>> load(QString service, QString account) = 0;
    virtual QCoro::Task<int> remove(QString service, QString account) = 0;
    /// False at once unless the secret exists but is locked. Otherwise resumes with true when it has been
    /// unlocked, which may never happen.
    virtual QCoro::Task<bool> unlocked(QString /*service*/, QString /*account*/) { co_return false; }
};

} // namespace ostrelle
