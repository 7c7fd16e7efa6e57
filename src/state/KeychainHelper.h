// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/PlainLog.h"
#include "platform/SecretStore.h"

#include <QCoroTask>
#include <QString>
#include <functional>
#include <memory>
#include <optional>

namespace ostrelle {

/// The program's own passwords in a secret store, one under each account name. Operations run one after
/// the other, in the order of their calls: a load sees the save before it.
class KeychainHelper {
public:
    /// Both must outlive the helper.
    KeychainHelper(SecretStore& secrets, PlainLog& log);
    /// Drops what has not begun; an operation under way runs to its end. See finishPending().
    ~KeychainHelper();
    KeychainHelper(const KeychainHelper&) = delete;
    KeychainHelper& operator=(const KeychainHelper&) = delete;

    /// Called after each save, with whether the password is in the keychain now.
    void setSaveListener(std::function<void(bool isKept)> listener);

    /// Replaces the account's password. A failure is logged, and leaves the account without one.
    void save(QString password, QString account);
    /// The account's password, or nothing if there is none or it cannot be read.
    QCoro::Task<std::optional<QString>> load(QString account);
    /// If the account's password is in a locked keyring, waits until that is unlocked and returns true;
    /// otherwise returns false at once. Holds up no other operation.
    QCoro::Task<bool> unlocked(QString account);
    /// A missing password is no error.
    void remove(QString account);

    /// Whether a save or removal is pending.
    bool isSaving() const;
    /// Resumes when all operations called so far have ended. Await it before the program ends.
    QCoro::Task<> finishPending();

private:
    struct Context;

    static QCoro::Task<> saveAfter(QCoro::Task<> previous, std::shared_ptr<Context> context, QString password,
                                   QString account);
    static QCoro::Task<> loadAfter(QCoro::Task<> previous, std::shared_ptr<Context> context, QString account,
                                   std::shared_ptr<std::optional<QString>> password);
    static QCoro::Task<bool> unlocked(std::shared_ptr<Context> context, QString account);
    static QCoro::Task<> removeAfter(QCoro::Task<> previous, std::shared_ptr<Context> context,
                                     QString account);

    std::shared_ptr<Context> m_context;
    QCoro::Task<> m_last; // the latest operation, which awaits the one before it
};

} // namespace ostrelle
