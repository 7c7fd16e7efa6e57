// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/SecretStore.h"

#include <QCoroTask>
#include <optional>

namespace ostrelle {

/// For a program that needs no password: never touches the desktop's keyring, which might prompt the user.
class NoSecrets : public SecretStore {
public:
    QCoro::Task<int> save(QString, QString, QString) override { co_return 0; }
    QCoro::Task<std::optional<QString>> load(QString, QString) override { co_return std::nullopt; }
    QCoro::Task<int> remove(QString, QString) override { co_return 0; }
};

} // namespace ostrelle
