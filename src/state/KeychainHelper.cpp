// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/KeychainHelper.h"

#include "product/AppFolders.h"

#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

/// Shared with the operations under way, which may outlive the helper. Its references must not be used once
/// it is no longer open.
struct KeychainHelper::Context {
    SecretStore& secrets;
    PlainLog& log;
    bool isOpen = true;
    std::function<void(bool isKept)> onSaved = [](bool) {};
    qsizetype saving = 0; // saves and removals that have not ended
};

namespace {

QCoro::Task<> nothing() {
    co_return;
}

/// Awaits the task and drops it, or else each operation would keep all earlier ones alive.
QCoro::Task<> end(QCoro::Task<> task) {
    const QCoro::Task<> owned = std::move(task);
    if (!owned.isReady()) {
        co_await owned;
    }
}

} // namespace

KeychainHelper::KeychainHelper(SecretStore& secrets, PlainLog& log)
    : m_context(std::make_shared<Context>(Context{.secrets = secrets, .log = log})), m_last(nothing()) {}

KeychainHelper::~KeychainHelper() {
    m_context->isOpen = false;
}

void KeychainHelper::setSaveListener(std::function<void(bool isKept)> listener) {
    m_context->onSaved = std::move(listener);
}

void KeychainHelper::save(QString password, QString account) {
    if (!password.isValidUtf16()) { // it cannot be encoded as UTF-8
        m_context->onSaved(false);
        return;
    }
    ++m_context->saving;
    m_last = saveAfter(std::move(m_last), m_context, std::move(password), std::move(account));
}

QCoro::Task<std::optional<QString>> KeychainHelper::load(QString account) {
    const auto password = std::make_shared<std::optional<QString>>();
    m_last = loadAfter(std::move(m_last), m_context, std::move(account), password);
    co_await m_last; // from here on, the helper may be gone
    co_return *password;
}

QCoro::Task<bool> KeychainHelper::unlocked(QString account) {
    return unlocked(m_context, std::move(account));
}

QCoro::Task<bool> KeychainHelper::unlocked(std::shared_ptr<Context> context, QString account) {
    if (!context->isOpen) {
        co_return false;
    }
    co_return co_await context->secrets.unlocked(applicationIdentifier, account);
}

void KeychainHelper::remove(QString account) {
    ++m_context->saving;
    m_last = removeAfter(std::move(m_last), m_context, std::move(account));
}

bool KeychainHelper::isSaving() const {
    return m_context->saving > 0;
}

QCoro::Task<> KeychainHelper::finishPending() {
    co_await m_last;
}

QCoro::Task<> KeychainHelper::saveAfter(QCoro::Task<> previous, std::shared_ptr<Context> context,
                                        QString password, QString account) {
    co_await end(std::move(previous));
    // Deleting first, so that the new item cannot collide with an older one.
    if (context->isOpen) {
        co_await context->secrets.remove(applicationIdentifier, account);
    }
    int status = 0;
    if (context->isOpen) {
        status = co_await context->secrets.save(applicationIdentifier, account, password);
    }
    --context->saving;
    if (status != 0 && context->isOpen) {
        context->log.print(u"[KeychainHelper] Failed to save password: %1"_s.arg(status));
    }
    if (context->isOpen) {
        context->onSaved(status == 0);
    }
}

QCoro::Task<> KeychainHelper::loadAfter(QCoro::Task<> previous, std::shared_ptr<Context> context,
                                        QString account, std::shared_ptr<std::optional<QString>> password) {
    co_await end(std::move(previous));
    if (context->isOpen) {
        *password = co_await context->secrets.load(applicationIdentifier, account);
    }
}

QCoro::Task<> KeychainHelper::removeAfter(QCoro::Task<> previous, std::shared_ptr<Context> context,
                                          QString account) {
    co_await end(std::move(previous));
    if (context->isOpen) {
        co_await context->secrets.remove(applicationIdentifier, account);
    }
    --context->saving;
}

} // namespace ostrelle
